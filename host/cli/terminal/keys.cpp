#include "host/cli/terminal/keys.h"

#include <poll.h>
#include <unistd.h>

namespace vastra {

// A process in the background is stopped by the system when it uses the terminal.
CKeys::CKeys() {
  if (::tcgetpgrp(STDIN_FILENO) != ::getpgrp() || ::tcgetattr(STDIN_FILENO, &m_before) != 0) return;
  termios keys = m_before;
  keys.c_lflag &= ~static_cast<tcflag_t>(ICANON | ECHO);
  if (::tcsetattr(STDIN_FILENO, TCSADRAIN, &keys) == 0) m_file = STDIN_FILENO;
}

CKeys::~CKeys() {
  if (m_file >= 0) ::tcsetattr(m_file, TCSADRAIN, &m_before);
}

char CKeys::Take() {
  pollfd ready = {m_file, POLLIN, 0};
  char key = 0;
  if (m_file < 0 || ::poll(&ready, 1, 0) <= 0) return 0;
  if (::tcgetpgrp(m_file) == ::getpgrp() && ::read(m_file, &key, 1) == 1) return key;
  m_file = -1;  // the terminal is gone, or belongs to another process
  return 0;
}

}  // namespace vastra
