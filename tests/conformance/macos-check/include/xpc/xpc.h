#pragma once

#ifdef __cplusplus
extern "C" {
#endif

/// The process counts as busy from the one to the other, and is not ended for being idle.
void xpc_transaction_begin(void);
void xpc_transaction_end(void);

#ifdef __cplusplus
}
#endif
