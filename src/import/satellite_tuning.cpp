#include "import/satellite_tuning.h"

#include <cstdint>
#include <optional>

#include "command/error_codes.h"
#include "db/clauses.h"
#include "db/operations.h"
#include "db/record.h"
#include "db/setting_keys.h"
#include "db/value.h"

namespace tarvo_remote_control {

using tarvodb::configuracionWebGlobal;
using tarvodb::DiSEqCGlobal;
using tarvodb::NimGlobal;
using tarvodb::Record;

namespace {

// The intermediate frequencies that a tuner receives, in MHz, both included.
constexpr int kLowestIntermediateFrequency = 950;
constexpr int kHighestIntermediateFrequency = 2150;

void takeBandOfPosition(const CmdSetConfiguration& command, Change<NimGlobal>& tuner) {
    const auto positions =
        tarvodb::doSelect<DiSEqCGlobal>(command.db(), tarvodb::clause::kByDiseqcPosition,
                                        tuner.row[NimGlobal::DiSEqC].textOrEmpty());
    if (!positions.empty()) {
        tuner.copy(NimGlobal::banda_FI, positions.front()[DiSEqCGlobal::Banda]);
    }
}

// The local oscillator of the tuner's band in MHz; nothing when it is not set up.
std::optional<int> oscillatorFrequency(const CmdSetConfiguration& command,
                                       const Record<NimGlobal>& tuner) {
    const char* key = tuner[NimGlobal::banda_FI].asInt() == 1
                          ? tarvodb::setting::kHighBandOscillator
                          : tarvodb::setting::kLowBandOscillator;
    const auto settings = tarvodb::selectByNombre(command.db(), tarvodb::tSqlite3parent(key));
    return settings.empty()
               ? std::nullopt
               : std::optional(settings.front()[configuracionWebGlobal::valor].asInt());
}

}  // namespace

bool isFedThroughLoop(const Record<NimGlobal>& tuner) {
    return tuner[NimGlobal::RFIN_LOOP].asInt() == 1;
}

void followLoop(Change<NimGlobal>& second, const Record<NimGlobal>& first) {
    second.copy(NimGlobal::DiSEqC, first[NimGlobal::DiSEqC]);
    second.copy(NimGlobal::banda_FI, first[NimGlobal::banda_FI]);
}

bool tuneSatellite(CmdSetConfiguration& command, Change<NimGlobal>& tuner, bool frequencyGiven) {
    takeBandOfPosition(command, tuner);
    const auto oscillator = oscillatorFrequency(command, tuner.row);
    if (!oscillator) {
        return true;
    }
    // Wide sums: a document may give any number.
    Record<NimGlobal>& row = tuner.row;
    if (!frequencyGiven) {
        const auto received = std::int64_t{row[NimGlobal::Frequency].asInt()} + *oscillator;
        row.set(NimGlobal::fe, static_cast<int>(received));
        return true;
    }
    const auto intermediate = std::int64_t{row[NimGlobal::fe].asInt()} - *oscillator;
    if (intermediate < kLowestIntermediateFrequency ||
        intermediate > kHighestIntermediateFrequency) {
        return fail(command, ErrorCode::moduleInput,
                    "Resulting intermediate frequency is out of range. Please check frequency and "
                    "diseqc/band/rfLoop values.");
    }
    row.set(NimGlobal::Frequency, static_cast<int>(intermediate));
    return true;
}

}  // namespace tarvo_remote_control
