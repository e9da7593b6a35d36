// What the kernel tells about its processes. A row keeps the form that it had when the kernel's own structures were
// handed out: most members are room that is filled with zeros, and belong to nobody here.
#pragma once

#include <stdint.h>
#include <sys/types.h>

#define CTL_KERN 1
#define KERN_PROC 14
#define KERN_PROC_ALL 0

#define MAXCOMLEN 16

struct extern_proc {
  union {
    struct {
      void* next;
      void* previous;
    } room;
    struct timeval __p_starttime;
  } p_un;
  void* room1[2];
  int p_flag;
  char p_stat;
  pid_t p_pid;
  pid_t room2;
  int room3;
  void* room4[2];
  int room5[2];
  uint32_t room6;
  int room7;
  uint32_t room8;
  void* room9[2];
  uint32_t room10[2];
  struct timeval room11[3];
  uint64_t room12[3];
  int room13;
  void* room14;
  int room15;
  void* room16;
  int room17;
  uint32_t room18[3];
  unsigned char room19[2];
  char p_nice;
  char p_comm[MAXCOMLEN + 1];
  void* room20[2];
  uint16_t room21[2];
  void* room22;
};
#define p_starttime p_un.__p_starttime

struct _pcred {
  char room[72];
  void* room1;
  uid_t p_ruid;
  uid_t p_svuid;
  gid_t p_rgid;
  gid_t p_svgid;
  int room2;
};

struct _ucred {
  int32_t room;
  uid_t cr_uid;
  short cr_ngroups;
  gid_t cr_groups[16];
};

struct kinfo_proc {
  struct extern_proc kp_proc;
  struct eproc {
    void* room[2];
    struct _pcred e_pcred;
    struct _ucred e_ucred;
    struct {
      int32_t room;
      void* room1;
      int32_t room2[5];
      void* room3[3];
    } room1;
    pid_t e_ppid;
    pid_t e_pgid;
    short e_jobc;
    int32_t e_tdev;
    pid_t e_tpgid;
    void* room2;
    char e_wmesg[8];
    int32_t room3;
    short room4[3];
    int32_t e_flag;
    char e_login[12];
    int32_t room5[4];
  } kp_eproc;
};

// What programs that were built long ago rely on.
static_assert(sizeof(struct extern_proc) == 296);
static_assert(sizeof(struct kinfo_proc) == 648);

extern "C" {

int sysctl(int* name, unsigned length, void* old, size_t* oldSize, void* fresh, size_t freshSize);

}  // extern "C"
