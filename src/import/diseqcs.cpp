// The positions of the satellite dish switch.
#include <optional>
#include <string>

#include "db/clauses.h"
#include "document/coded_texts.h"
#include "import/sections.h"
#include "import/table_writes.h"

namespace tarvo_remote_control {

using document::XmlNode;
using tarvodb::DiSEqCGlobal;
using tarvodb::Record;

namespace {

struct TextField {
    const char* element;
    DiSEqCGlobal::Column column;
};

constexpr TextField kTextFields[] = {
    {"position", DiSEqCGlobal::Posicion},
    {"name", DiSEqCGlobal::Nombre},
    {"orbit", DiSEqCGlobal::Orbita},
};

struct CodedField {
    const char* element;
    DiSEqCGlobal::Column column;
    document::CodeTable texts;
};

constexpr CodedField kCodedFields[] = {
    {"polarity", DiSEqCGlobal::Polaridad, document::kPolarity},
    {"band", DiSEqCGlobal::Banda, document::kBand},
};

// Every coded text of the element must be one, not only the last of its name, which is stored.
bool validate(CmdSetConfiguration& command, const XmlNode& element) {
    for (const XmlNode& child : document::childrenOf(element)) {
        for (const CodedField& field : kCodedFields) {
            if (document::hasName(child, field.element) &&
                !document::codeOf(field.texts, document::textOf(child))) {
                return fail(command, error::kInvalidCommand,
                            std::string("Invalid value for diseqc/") + field.element);
            }
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
    diseqc.put(DiSEqCGlobal::Estado, 1);
    return diseqc;
}

Record<DiSEqCGlobal> storedOrNew(const CmdSetConfiguration& command, const char* id) {
    auto stored = tarvodb::doSelect<DiSEqCGlobal>(command.db(), tarvodb::clause::kByDiseqc, id);
    return stored.empty() ? newDiseqc(id) : std::move(stored.front());
}

void setFields(Record<DiSEqCGlobal>& diseqc, const XmlNode& element) {
    bool changed = false;
    for (const TextField& field : kTextFields) {
        if (const char* text = document::lastText(element, field.element)) {
            changed |= diseqc.set(field.column, text);
        }
    }
    for (const CodedField& field : kCodedFields) {
        if (const char* text = document::lastText(element, field.element)) {
            const int code = document::codeOf(field.texts, text).value_or(0);
            changed |= diseqc.setIfOtherNumber(field.column, code);
        }
    }
    if (changed) {
        diseqc.set(DiSEqCGlobal::Estado, 1);
    }
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
            return fail(command, error::kInvalidCommand, "diseqc has no id field");
        }
        diseqcs.push_back(storedOrNew(command, id));
        setFields(diseqcs.back(), element);
        logChange("New DISEqC parameters: " + logText(diseqcs.back()));
    }
    return replaceTable(command, diseqcs, "Could not delete diseqcs", "Could not insert diseqc");
}

}  // namespace tarvo_remote_control
