// CKeys: the keys that are typed on the terminal, one by one and without being shown, while the object
// exists. Without a terminal on standard input, and in the background, there are none.
#pragma once

#include <termios.h>

namespace vastra {

class CKeys {
 public:
  CKeys();
  CKeys(const CKeys&) = delete;
  CKeys& operator=(const CKeys&) = delete;
  ~CKeys();

  // Can be read while a key waits; negative: there are no keys.
  int File() const { return m_file; }
  // The next key; 0: none waits.
  char Take();

 private:
  int m_file = -1;
  termios m_before = {};
};

}  // namespace vastra
