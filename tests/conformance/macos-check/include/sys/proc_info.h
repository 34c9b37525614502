#pragma once

#include <stdint.h>
#include <sys/types.h>

#define PROC_ALL_PIDS 1
#define PROC_UID_ONLY 4

#define PROC_PIDT_SHORTBSDINFO 13
#define PROC_PIDT_SHORTBSDINFO_SIZE ((int)sizeof(struct proc_bsdshortinfo))
#define PROC_PIDPATHINFO_MAXSIZE (4 * 1024)

struct proc_bsdshortinfo {
    uint32_t pbsi_pid;
    uint32_t pbsi_ppid;
    uint32_t pbsi_pgid;
    uint32_t pbsi_status;
    char pbsi_comm[16];
    uint32_t pbsi_flags;
    uid_t pbsi_uid;
    gid_t pbsi_gid;
    uid_t pbsi_ruid;
    gid_t pbsi_rgid;
    uid_t pbsi_svuid;
    gid_t pbsi_svgid;
    uint32_t pbsi_rfu;
};
