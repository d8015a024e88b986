// The modules of the headend with their hardware, CAM and firmware.
#include "mapping/modules.h"

#include <utility>

#include "db/clauses.h"
#include "db/operations.h"
#include "db/record.h"
#include "db/schema.h"
#include "document/coded_texts.h"
#include "document/writer.h"
#include "export/elements.h"
#include "export/sections.h"
#include "mapping/element.h"
#include "mapping/module_family.h"

namespace tarvo_remote_control {

using document::CardRights;
using mapping::Element;
using tarvodb::CAMInfoGlobal;
using tarvodb::doSelect;
using tarvodb::ModulosCabecera;
using tarvodb::Record;
using tarvodb::RedesModulos;

namespace {

// Exactly 24 hours count as no rights.
CardRights cardRights(int hours) {
    if (hours > 48) {
        return CardRights::longer;
    }
    if (hours > 24) {
        return CardRights::lessThan48Hours;
    }
    return hours == 24 || hours == 0 ? CardRights::none : CardRights::lessThan24Hours;
}

// Writes one `module` element.
class ModuleExport {
  public:
    ModuleExport(CmdGetConfiguration& command, const write::Module& module)
        : command_(command), module_(module) {}

    void write() {
        const bool reportsCam = mapping::reportsCam(module_);
        if (reportsCam) {
            readCam();
        }
        writeChildren(command_.out(), mapping::kModule, module_,
                      Conditions().with(mapping::When::moduleReportsCam, reportsCam),
                      [this](const Element& element) { writeOther(element); });
    }

  private:
    // The last row of a module counts; without a row the CAM reads as all empty.
    void readCam() {
        auto rows = doSelect<CAMInfoGlobal>(command_.stateDb(), tarvodb::clause::kByMac, mac());
        if (!rows.empty()) {
            cam_ = std::move(rows.back());
        }
    }

    void writeOther(const Element& element) {
        if (element.column.isOf(CAMInfoGlobal::info)) {
            writeCam(element);
        } else if (element.column.isOf(ModulosCabecera::info)) {
            writeFirmware(element);
        } else {
            mapping::rowNamed(kSectionWriters, element.name).write(command_, element, module_);
        }
    }

    void writeCam(const Element& element) {
        if (element.column.index == CAMInfoGlobal::rightsHours) {
            const auto rights = cardRights(cam_[CAMInfoGlobal::rightsHours].asInt());
            command_.out().leaf(element.name,
                                document::codeText(element.texts, static_cast<int>(rights)));
        } else {
            writeLeaf(command_.out(), element, cam_);
        }
    }

    void writeFirmware(const Element& element) {
        for (const auto& firmware :
             doSelect<ModulosCabecera>(command_.stateDb(), tarvodb::clause::kByMac, mac())) {
            writeLeaf(command_.out(), element, firmware);
        }
    }

    [[nodiscard]] const char* mac() const { return module_[RedesModulos::MAC].textOrEmpty(); }

    struct SectionWriter {
        const char* name;
        void (*write)(CmdGetConfiguration&, const Element&, const write::Module&);
    };
    static constexpr SectionWriter kSectionWriters[] = {
        {"inputs", write::inputs},
        {"outputs", write::outputs},
        {"services", write::services},
    };
    static_assert(mapping::nameExactly(kSectionWriters, mapping::kModule,
                                       [](const Element& element) {
                                           return element.kind == mapping::Kind::list;
                                       }));

    CmdGetConfiguration& command_;
    const write::Module& module_;
    Record<CAMInfoGlobal> cam_;
};

}  // namespace

void write::modules(CmdGetConfiguration& command, const Element& section) {
    document::Writer& out = command.out();
    out.open(section.name);
    for (const auto& module : doSelect<RedesModulos>(command.configDb())) {
        out.open(section.children[0].name);
        ModuleExport(command, module).write();
        out.close();
    }
    out.close();
}

}  // namespace tarvo_remote_control
