// The export mark and the number types that every module uses.
#pragma once

#include <cstdint>

// Marks what libvastra.so exports; everything else is hidden.
#define VASTRA_API __attribute__((visibility("default")))

namespace vastra {

using UINT = std::uint32_t;
using DWORD = std::uint32_t;
using COLORREF = std::uint32_t;  // 0x00BBGGRR
using WPARAM = std::uintptr_t;
using LPARAM = std::intptr_t;

}  // namespace vastra
