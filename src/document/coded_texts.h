// The texts that stand in a document for the codes of the tables' columns. Export reads a table
// from code to text, import from text to code.
#pragma once

#include <optional>
#include <span>

namespace document {

struct CodeText {
    int code;
    const char* text;
};

using CodeTable = std::span<const CodeText>;

// The text of a code, `otherwise` when the table has none.
const char* codeText(CodeTable table, int code, const char* otherwise = "");

// The code of a text, compared without regard to letter case or exactly; nothing when the table
// has no such text.
std::optional<int> codeOfAnyCase(CodeTable table, const char* text);
std::optional<int> codeOfExactly(CodeTable table, const char* text);

// --- Satellites and dishes -------------------------------------------------------------------

inline constexpr CodeText kPolarity[] = {{0, "vertical"}, {1, "horizontal"}};
inline constexpr CodeText kBand[] = {{0, "low"}, {1, "high"}};

// --- Inputs ----------------------------------------------------------------------------------

// The channel bandwidth of an input counts up, that of an output down (kOutputBandwidth).
inline constexpr CodeText kInputBandwidth[] = {{0, "6 MHz"}, {1, "7 MHz"}, {2, "8 MHz"}};
inline constexpr CodeText kHierarchy[] = {{0, "High Priority"}, {1, "Low Priority"}};

// Physical layer scrambling. Export and import disagree on which code is gold and which is root;
// both are kept as they are (docs/known-asymmetries.md).
inline constexpr CodeText kPlsModeExported[] = {{1, "gold"}, {2, "root"}};
inline constexpr const char* kPlsModeExportedOtherwise = "auto";
inline constexpr CodeText kPlsModeImported[] = {{0, "auto"}, {1, "root"}, {2, "gold"}};

// A physical layer pipe or stream id that is not a number.
inline constexpr CodeText kAutomaticId[] = {{-2, "auto"}};

inline constexpr CodeText kSignalQuality[] = {{0, "Bad"}, {1, "Marginal"}, {2, "Good"}};
inline constexpr const char* kSignalUnlocked = "Unlocked";

// --- Outputs ---------------------------------------------------------------------------------

inline constexpr int kMode8K = 1;
inline constexpr CodeText kModeOFDM[] = {{0, "2K"}, {kMode8K, "8K"}};
inline constexpr CodeText kOutputBandwidth[] = {{0, "8 MHz"}, {1, "7 MHz"}, {2, "6 MHz"}};
inline constexpr CodeText kGuardInterval[] = {{0, "1/32"}, {1, "1/16"}, {2, "1/8"}, {3, "1/4"}};
inline constexpr CodeText kConstellationDvbT[] = {{0, "QPSK"}, {1, "16 QAM"}, {2, "64 QAM"}};
inline constexpr CodeText kConstellationDvbC[] = {
    {0, "16 QAM"}, {1, "32 QAM"}, {2, "64 QAM"}, {3, "128 QAM"}, {4, "256 QAM"}};
inline constexpr CodeText kCodeRate[] = {
    {0, "1/2"}, {1, "2/3"}, {2, "3/4"}, {3, "5/6"}, {4, "7/8"}};
inline constexpr CodeText kSpectrum[] = {{0, "Normal"}, {1, "Reversed"}};

// --- Conditional access and scrambling -------------------------------------------------------

inline constexpr CodeText kCardStatus[] = {
    {1, "OK"}, {2, "No SmartCard"}, {3, "Mute SmartCard"}, {4, "Not Supported"}};
inline constexpr const char* kCardStatusOtherwise = "No API";

// How long the rights of a smart card still last.
enum class CardRights : int { none, lessThan24Hours, lessThan48Hours, longer };
inline constexpr CodeText kCardRights[] = {
    {static_cast<int>(CardRights::none), "KO. No rights"},
    {static_cast<int>(CardRights::lessThan24Hours), "Less than 24 hours"},
    {static_cast<int>(CardRights::lessThan48Hours), "Less than 48 hours"},
    {static_cast<int>(CardRights::longer), "Rights OK"}};

// What the device makes of a service that it receives, 1 for an error.
inline constexpr CodeText kServiceState[] = {{0, "OK"}, {1, "ERROR"}};

// How the two control words are used.
inline constexpr CodeText kScramblingMode[] = {{0, "even"}, {1, "odd"}, {2, "toggle"}};

// --- Networks --------------------------------------------------------------------------------

inline constexpr const char* kNoSiTable = "Not Found";

}  // namespace document
