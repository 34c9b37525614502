#pragma once

#ifdef __cplusplus
extern "C" {
#endif

typedef struct _acl* acl_t;
typedef struct _acl_entry* acl_entry_t;
typedef struct _acl_permset* acl_permset_t;
typedef enum { ACL_TYPE_EXTENDED = 0x100 } acl_type_t;
typedef enum { ACL_UNDEFINED_TAG = 0, ACL_EXTENDED_ALLOW = 1, ACL_EXTENDED_DENY = 2 } acl_tag_t;
typedef enum { ACL_FIRST_ENTRY = 0, ACL_NEXT_ENTRY = -1, ACL_LAST_ENTRY = -2 } acl_entry_id_t;
typedef enum {
    ACL_ADD_FILE = 1 << 2,
    ACL_EXECUTE = 1 << 3,
    ACL_DELETE = 1 << 4,
    ACL_ADD_SUBDIRECTORY = 1 << 5,
    ACL_DELETE_CHILD = 1 << 6,
    ACL_WRITE_SECURITY = 1 << 12,
    ACL_CHANGE_OWNER = 1 << 13
} acl_perm_t;

acl_t acl_init(int count);
acl_t acl_get_link_np(const char* path, acl_type_t type);
int acl_set_file(const char* path, acl_type_t type, acl_t list);
int acl_create_entry(acl_t* list, acl_entry_t* entry);
int acl_set_tag_type(acl_entry_t entry, acl_tag_t tag);
int acl_set_qualifier(acl_entry_t entry, const void* qualifier);
int acl_add_perm(acl_permset_t rights, acl_perm_t right);
int acl_set_permset(acl_entry_t entry, acl_permset_t rights);
acl_t acl_get_fd_np(int descriptor, acl_type_t type);
int acl_free(void* object);
/// 0 while there is such an entry; -1 with errno (EINVAL behind the last one).
int acl_get_entry(acl_t list, int which, acl_entry_t* entry);
int acl_get_tag_type(acl_entry_t entry, acl_tag_t* tag);
int acl_get_permset(acl_entry_t entry, acl_permset_t* rights);
/// 1 when the right is given, 0 when it is not, -1 with errno.
int acl_get_perm_np(acl_permset_t rights, acl_perm_t right);

#ifdef __cplusplus
}
#endif
