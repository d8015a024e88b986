// The positions of the satellite dish switch.
#include <string>

#include "db/clauses.h"
#include "import/keyed_rows.h"
#include "import/sections.h"
#include "import/table_writes.h"

namespace tarvo_remote_control {

using document::XmlNode;
using tarvodb::DiSEqCGlobal;
using tarvodb::Record;

namespace {

constexpr TextField<DiSEqCGlobal> kTextFields[] = {
    {"position", DiSEqCGlobal::Posicion},
    {"name", DiSEqCGlobal::Nombre},
    {"orbit", DiSEqCGlobal::Orbita},
};

constexpr CodedField<DiSEqCGlobal> kCodedFields[] = {
    {"polarity", DiSEqCGlobal::Polaridad, document::kPolarity},
    {"band", DiSEqCGlobal::Banda, document::kBand},
};

// Every coded text of the element must be one, not only the last of its name, which is stored.
bool validate(CmdSetConfiguration& command, const XmlNode& element) {
    for (const XmlNode& child : document::childrenOf(element)) {
        const auto* field = document::rowFor(kCodedFields, child);
        if (field != nullptr && !document::codeOfAnyCase(field->texts, document::textOf(child))) {
            return fail(command, ErrorCode::invalidCommand,
                        std::string("Invalid value for diseqc/") + field->element);
        }
    }
    return true;
}

Record<DiSEqCGlobal> newDiseqc(const char* id) {
    Record<DiSEqCGlobal> diseqc;
    diseqc.put(DiSEqCGlobal::idDiSEqCGlobal, id);
    diseqc.put(DiSEqCGlobal::Posicion, 0);
    diseqc.put(DiSEqCGlobal::Nombre, "");
    diseqc.put(DiSEqCGlobal::Orbita, 0);
    diseqc.put(DiSEqCGlobal::Polaridad, 0);
    diseqc.put(DiSEqCGlobal::Banda, 0);
    diseqc.put(DiSEqCGlobal::Estado, StatusMark::changed);
    return diseqc;
}

std::string logText(const Record<DiSEqCGlobal>& diseqc) {
    return "position=" + diseqc[DiSEqCGlobal::Posicion].asString() +
           " name=" + diseqc[DiSEqCGlobal::Nombre].asString() +
           " orbit=" + diseqc[DiSEqCGlobal::Orbita].asString() +
           " polarity=" + diseqc[DiSEqCGlobal::Polaridad].asString() +
           " band=" + diseqc[DiSEqCGlobal::Banda].asString();
}

}  // namespace

bool applyDiseqcs(CmdSetConfiguration& command, const XmlNode& section) {
    std::vector<Record<DiSEqCGlobal>> diseqcs;
    for (const XmlNode& element : document::childrenOf(section)) {
        if (!document::hasName(element, "diseqc")) {
            return failOnElement(command, "No diseqc element found");
        }
        if (!validate(command, element)) {
            return false;
        }
        const char* id = document::lastText(element, "id");
        if (id == nullptr) {
            return fail(command, ErrorCode::invalidCommand, "diseqc has no id field");
        }
        diseqcs.push_back(storedOrNew(command, tarvodb::clause::kByDiseqc, id, newDiseqc));
        setFields(diseqcs.back(), element, kTextFields, kCodedFields);
        logChange("New DISEqC parameters: " + logText(diseqcs.back()));
    }
    return replaceTable(command, diseqcs, "Could not delete diseqcs", "Could not insert diseqc");
}

}  // namespace tarvo_remote_control
