// Any bytes as a command document, and as the result document of a stored command: what is taken
// is printed, and what is printed can be read again.
#include "command/command.h"
#include "fuzz_device.h"

namespace {

class StoredCommand : public tarvo_remote_control::Command {
  public:
    using Command::Command;
    void execute() override {}
};

void asCommand(const std::string& text) {
    document::XmlDocument document;
    document::parseCopy(document, text);
    if (document.first_node() == nullptr) {
        return;
    }
    try {
        StoredCommand command(document.first_node());
        command.run();
        command.save();
    } catch (const tarvo_remote_control::CommandParsingError&) {
        return;
    }
}

void asResult(const std::string& text) {
    tarvo_remote_control::ResultDocument result;
    result.loadXml(text);
    tarvo_remote_control::ResultDocument again;
    again.loadXml(result.toXml());
    fuzz::require(result.errors() == again.errors(), "the printed errors are others");
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const fuzz::Device device;
    const std::string text(reinterpret_cast<const char*>(data), size);
    for (const auto use : {asCommand, asResult}) {
        try {
            use(text);
        } catch (const document::ParseError&) {
            continue;
        }
    }
    return 0;
}
