// CLogSample: one scan. It carries no names: the value at place i belongs to the i-th name of the link or
// stage that gave the sample.
#pragma once

#include "vastra/platform/array.h"
#include "vastra/platform/object.h"
#include "vastra/platform/thread.h"
#include "vastra/platform/time.h"

namespace vastra {

// A copy takes the time, as one block of 12 bytes, and the values; the lock is each sample's own.
class VASTRA_API CLogSample : public CObject {
  DECLARE_DYNAMIC(CLogSample)
 public:
  _timeb m_time;                  // all 0 until a producer fills it
  CArray<float, float> m_values;  // in the unit of each variable
  CCriticalSection m_lock;  // held by a worker that reads or fills the sample, behind the lock of its stage
};

}  // namespace vastra
