// The export of the conditional-access modules that the headend knows.
#pragma once

#include "command/command.h"
#include "document/writer.h"

namespace tarvo_remote_control {

class CmdGetVsecureCAMList : public Command {
  public:
    using Command::Command;

    // The command form: `data` / `getVsecureCAMListResult` / `list`, with public keys only when
    // the command element has a child `includePublicKeys` that is 1.
    void execute() override;

    // Writes an element `listName` with one `cam` per row of VSecure. A full record has the public
    // key too. When the database cannot be opened, error 102 is recorded and the element is empty.
    void buildCAMList(document::Writer& out, bool includePublicKeys, bool fullRecords,
                      const char* listName);
};

}  // namespace tarvo_remote_control
