// Messages of a fleet: subjects, chunks, packs and receipts, from anybody who may publish.
#include "host/fleet/chunk.h"
#include "host/fleet/fleet_names.h"
#include "host/fleet/live_message.h"
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

// A line that goes into a feed has no end within.
void FuzzLive(std::string_view subject, std::string_view message) {
  if (const auto logger = vastra::ParseLiveSubject(subject))
    if (vastra::LiveSubject(*logger) != subject) __builtin_trap();
  try {
    for (const auto& line : vastra::ParseLive(message).lines)
      if (line.text.find('\n') != std::string::npos) __builtin_trap();
  } catch (const vastra::CLiveFault&) {
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
  vastra::ParseReceipts(subject, message);
  FuzzLive(subject, message);
  return 0;
}
