// A text for many readers: it is made when the first one asks for it, once.
#pragma once

#include <functional>
#include <memory>
#include <mutex>
#include <string>
#include <utility>

namespace vastra {

class CSharedText {
 public:
  // make must not refer to anything that can go.
  explicit CSharedText(std::function<std::string()> make) : m_make(std::move(make)) {}
  CSharedText(const CSharedText&) = delete;
  CSharedText& operator=(const CSharedText&) = delete;

  // From any thread.
  const std::string& Text() const {
    std::call_once(m_once, [this] {
      m_text = m_make();
      m_make = nullptr;  // with what it has kept
    });
    return m_text;
  }

 private:
  mutable std::once_flag m_once;
  mutable std::function<std::string()> m_make;
  mutable std::string m_text;
};

using CTextPtr = std::shared_ptr<const CSharedText>;

inline CTextPtr ShareText(std::function<std::string()> make) {
  return std::make_shared<const CSharedText>(std::move(make));
}

}  // namespace vastra
