// Preloaded by the tests of claims: a disk whose syncs take SHIM_SYNC milliseconds, and a clock that is at
// SHIM_CLOCK seconds after 1970 when the process starts, as on a computer without a battery.
#define _GNU_SOURCE
#include <stdlib.h>
#include <sys/syscall.h>
#include <time.h>
#include <unistd.h>

static time_t s_offset;

__attribute__((constructor)) static void Start(void) {
  struct timespec now;
  syscall(SYS_clock_gettime, CLOCK_REALTIME, &now);
  if (getenv("SHIM_CLOCK")) s_offset = atol(getenv("SHIM_CLOCK")) - now.tv_sec;
}

int fsync(int file) {
  const char* milliseconds = getenv("SHIM_SYNC");
  if (milliseconds) usleep(1000 * (useconds_t)atol(milliseconds));
  return (int)syscall(SYS_fsync, file);
}

int clock_gettime(clockid_t clock, struct timespec* now) {
  const int result = (int)syscall(SYS_clock_gettime, clock, now);
  if (clock == CLOCK_REALTIME) now->tv_sec += s_offset;
  return result;
}
