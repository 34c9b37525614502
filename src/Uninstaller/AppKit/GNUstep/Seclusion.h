#ifdef __cplusplus
extern "C" {
#endif

/// Detaches the process from the GNUstep desktop, which is of no use to a program that is gone in a minute:
/// it reads no command line and no saved settings, offers no services, starts no server processes (gdnc,
/// make_services), waits for none, and leaves no files behind. Call this once, before anything else of
/// GNUstep is used.
void SNTSecludeProcess(void);

#ifdef __cplusplus
}
#endif
