// The bytes of a whole configuration, block by block. All fields of a block have different values, so that a
// test sees two fields that are swapped.
#pragma once

#include "tests/support/hex.h"

namespace vastra {

inline const std::string kNodeA = Bytes(
    "01'A' 01000000 04000000 05000000 06000000 02000000 03000000 07000000 08000000 09000000 01't' 01'u' "
    "0B000000 0C000000 0D000000 0E000000 "                             // value1 to value4
    "0100 01'v' 01000000 00000040 01'w' 01000000 000080BF 0000C03F");  // varNames; scaler: 2.0, -1.0, 1.5
inline const std::string kNodeB = Bytes("01'B' 00x36 00 00 00x16 0000 00000000");

inline const std::string kInput = Bytes("01000000 02000000 02000000 03000000 E8030000 04000000 06'y = x;'") +
                                  kNodeB + kNodeA + Bytes("0200 06'/a.rph' 00 0100 05'y = x' 0100 01'y'");

inline const std::string kOutput1002 =
    Bytes("0200 01'v' 01'w' 0100 01'e' 01'n' 01000000 02000000 03000000 04000000 02'/d' 02'e;'");
inline const std::string kOutput1003 = kOutput1002 + Bytes("01'k' 05000000 01'p' 06000000");

inline const std::string kSummary = Bytes(
    "0100 01'e' 0200 01's' 01't' 0100 01'v' 01'n' 01000000 02000000 03000000 04000000 02'/d' 04's;t;' "
    "02'e;'");

inline const std::string kOutputs = Bytes("01000000") + kOutput1003;
inline const std::string kSummaries = Bytes("01000000") + kSummary;
inline const std::string kPlcWrite = Bytes("02000000") + kNodeA + kNodeB;
inline const std::string kSmart = Bytes("0100 01'q' 0100 01'n' 0100 01'i' 0100 01'o' 02'q;'");
inline const std::string kTrend = Bytes("0100 01'x' 0100 01'q' 0100 01'b' 07000000 02'q;'");

inline const std::string kFile =
    Bytes("'VSTR' EB030000") + kInput + kOutputs + kSummaries + kPlcWrite + kSmart + kTrend;

// The same configuration in JSON.
inline const std::string kNodeAJson =
    R"({"nodeName":"A","driver":{"cardNumber":1,"timeOut":2,"station":3,"registerAddress":4,"registerAddressExt":5,
"plcNodeAddress":6,"variableCount":7,"plcType":8,"openState":9,"text1":"t","text2":"u","value1":11,"value2":12,
"value3":13,"value4":14,"value5":0},"varNames":["v"],
"scaler":[{"varName":"w","scale":2.0,"clamping":1,"lowLimit":-1.0,"highLimit":1.5}]})";
inline const std::string kNodeBJson =
    R"({"nodeName":"B","driver":{"cardNumber":0,"timeOut":0,"station":0,"registerAddress":0,"registerAddressExt":0,
"plcNodeAddress":0,"variableCount":0,"plcType":0,"openState":0,"text1":"","text2":"","value1":0,"value2":0,
"value3":0,"value4":0,"value5":0},"varNames":[],"scaler":[]})";
inline const std::string kJson =
    R"({"version":1003,"input":{"simulating":1,"preprocess":2,"autoStart":3,"scanPeriod":1000,"asFastAsPossible":4,
"inputFiles":["/a.rph",""],"plcNodes":[)" +
    kNodeAJson + "," + kNodeBJson +
    R"(],"preEquationText":"y = x;","preEquations":["y = x"],"preNewVars":["y"]},
"outputs":[{"name":"n","enableText":"e;","enableEquations":["e"],"varNames":["v","w"],"saveRp":1,"saveCsv":2,
"maxLogs":3,"maxSamples":4,"directory":"/d","nameVariable":"k","dwordName":5,"usePrefix":6,"prefix":"p"}],
"summaries":[{"name":"n","enableText":"e;","enableEquations":["e"],"summaryText":"s;t;",
"summaryEquations":["s","t"],"varNames":["v"],"saveRp":1,"saveCsv":2,"maxSummaries":4,"maxSamples":3,
"directory":"/d"}],
"plcWrite":{"nodes":[)" +
    kNodeAJson + "," + kNodeBJson + R"(],"disableWriting":0},
"smart":{"inputNames":["n"],"inputVars":["i"],"equationText":"q;","equations":["q"],"outputVars":["o"]},
"trend":{"baseVars":["b"],"calculateExtra":7,"extraVars":["x"],"equationText":"q;","equations":["q"]}})";

}  // namespace vastra
