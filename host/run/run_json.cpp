#include "host/run/run_json.h"

namespace vastra {
namespace {

CJson LossJson(const CLogLoss& loss) {
  return {{"cause", ToJson(loss.cause)},
          {"rows", loss.rows},
          {"first", ToJson(loss.first)},
          {"last", ToJson(loss.last)}};
}

CJson EntryJson(const CRunLedger& entry) {
  const CLogLedger& ledger = entry.ledger;
  CJson tree = {{"name", ToJson(entry.name)},    {"kind", entry.isSummary ? "summary" : "output"},
                {"offered", ledger.offered},     {"unwanted", ledger.unwanted},
                {"taken", ledger.taken},         {"recovered", ledger.recovered},
                {"onDisk", ledger.onDisk},       {"rotated", ledger.rotated},
                {"inJournal", ledger.inJournal}, {"inMemory", ledger.inMemory},
                {"lost", ledger.lost},           {"losses", CJson::array()}};
  for (const CLogLoss& loss : ledger.losses) tree["losses"].push_back(LossJson(loss));
  return tree;
}

}  // namespace

CJson CountsJson(const CScanCounts& counts) {
  const auto& failed = counts.failedWrites;
  return {{"read", counts.read},
          {"failedReads", counts.failedReads},
          {"late", counts.late},
          {"failedWrites",
           {{"smart", failed.smart},
            {"outputs", failed.outputs},
            {"summaries", failed.summaries},
            {"plcWrite", failed.plcWrite},
            {"trend", failed.trend}}}};
}

CJson LedgerJson(const std::vector<CRunLedger>& ledgers) {
  CJson list = CJson::array();
  for (const CRunLedger& entry : ledgers) list.push_back(EntryJson(entry));
  return list;
}

}  // namespace vastra
