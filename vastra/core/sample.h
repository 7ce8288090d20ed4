// CLogSample: one scan. It has no names: the value at index i belongs to the i-th name of the link or stage
// that has produced the sample.
#pragma once

#include "vastra/platform/array.h"
#include "vastra/platform/object.h"
#include "vastra/platform/thread.h"
#include "vastra/platform/time.h"

namespace vastra {

// A copy has the time, all 12 bytes, and the values; each sample has its own lock.
class VASTRA_API CLogSample : public CObject {
  DECLARE_DYNAMIC(CLogSample)
 public:
  _timeb m_time;                  // all 0 until a producer fills it
  CArray<float, float> m_values;  // in the unit of each variable
  // Held while a worker reads or fills the sample; locked after the lock of its stage.
  CCriticalSection m_lock;
};

}  // namespace vastra
