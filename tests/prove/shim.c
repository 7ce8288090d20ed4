// Preloaded by the tests of claims: a disk whose syncs take SHIM_SYNC milliseconds, and a clock that is at
// SHIM_CLOCK seconds after 1970 when the process starts, as on a computer without a battery.
#define _GNU_SOURCE
#include <stdlib.h>
#include <sys/syscall.h>
#include <sys/time.h>
#include <time.h>
#include <unistd.h>

static time_t s_offset;

__attribute__((constructor)) static void Start(void) {
  struct timespec now;
  syscall(SYS_clock_gettime, CLOCK_REALTIME, &now);
  if (getenv("SHIM_CLOCK")) s_offset = atol(getenv("SHIM_CLOCK")) - now.tv_sec;
}

static void Wait(void) {
  const char* milliseconds = getenv("SHIM_SYNC");
  if (milliseconds) usleep(1000 * (useconds_t)atol(milliseconds));
}

int fsync(int file) {
  Wait();
  return (int)syscall(SYS_fsync, file);
}

int fdatasync(int file) {
  Wait();
  return (int)syscall(SYS_fdatasync, file);
}

int clock_gettime(clockid_t clock, struct timespec* now) {
  const int result = (int)syscall(SYS_clock_gettime, clock, now);
  if (clock == CLOCK_REALTIME) now->tv_sec += s_offset;
  return result;
}

time_t time(time_t* result) {
  struct timespec now;
  clock_gettime(CLOCK_REALTIME, &now);
  if (result) *result = now.tv_sec;
  return now.tv_sec;
}
