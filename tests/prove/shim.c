// Preloaded by the tests of claims: a disk whose syncs take SHIM_SYNC milliseconds, a clock that is at
// SHIM_CLOCK seconds after 1970 when the process starts, as on a computer without a battery, and one that is
// ahead by the seconds in the first eight bytes of the file SHIM_STEPS, which can change at any time. The
// next eight are more milliseconds for each sync.
#define _GNU_SOURCE
#include <fcntl.h>
#include <stdlib.h>
#include <sys/mman.h>
#include <sys/syscall.h>
#include <time.h>
#include <unistd.h>

static time_t s_offset, s_noSteps[2];
static const volatile time_t* s_steps = s_noSteps;

__attribute__((constructor)) static void Start(void) {
  struct timespec now;
  syscall(SYS_clock_gettime, CLOCK_REALTIME, &now);
  if (getenv("SHIM_CLOCK")) s_offset = atol(getenv("SHIM_CLOCK")) - now.tv_sec;
  if (!getenv("SHIM_STEPS")) return;
  const int file = open(getenv("SHIM_STEPS"), O_RDONLY);
  void* const steps = mmap(NULL, sizeof s_noSteps, PROT_READ, MAP_SHARED, file, 0);
  if (steps != MAP_FAILED) s_steps = steps;
  close(file);
}

int fsync(int file) {
  const char* milliseconds = getenv("SHIM_SYNC");
  usleep(1000 * (useconds_t)(s_steps[1] + (milliseconds ? atol(milliseconds) : 0)));
  return (int)syscall(SYS_fsync, file);
}

int clock_gettime(clockid_t clock, struct timespec* now) {
  const int result = (int)syscall(SYS_clock_gettime, clock, now);
  if (clock == CLOCK_REALTIME) now->tv_sec += s_offset + s_steps[0];
  return result;
}
