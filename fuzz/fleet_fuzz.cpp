// Messages of a fleet: subjects, chunks, packs and receipts, from anybody who may publish.
#include "host/fleet/chunk.h"
#include "host/fleet/fleet_names.h"
#include "host/fleet/receipt_sender.h"

namespace {

// What is read back must be what was read.
void FuzzSubject(std::string_view subject) {
  for (const vastra::EFileSubject kind : {vastra::EFileSubject::log, vastra::EFileSubject::done})
    if (const auto parts = vastra::ParseFileSubject(kind, subject))
      if (!vastra::ParseFileSubject(kind, vastra::SubjectOf(kind, *parts))) __builtin_trap();
}

template <typename Read>
void FuzzMessage(Read read) {
  try {
    read();
  } catch (const vastra::CChunkFault&) {
  }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* bytes, std::size_t size) {
  const std::string_view text(reinterpret_cast<const char*>(bytes), size);
  const std::string_view subject = text.substr(0, text.find(' '));
  const std::string_view message = text.substr(std::min(size, subject.size() + 1));
  FuzzSubject(subject);
  FuzzMessage([&] { vastra::ParseChunk(message, 0); });
  FuzzMessage([&] { vastra::ParsePack(message); });
  vastra::ParseReceipt(subject, message);
  return 0;
}
