// The import of the conditional-access modules that the headend knows.
#pragma once

#include "command/command.h"
#include "document/xml.h"

namespace tarvo_remote_control {

class CmdSetVsecureCAMList : public Command {
  public:
    using Command::Command;

    // The command form: the command element's child `list`, partial when its child `partialList`
    // is 1.
    void execute() override;

    // Replaces the rows of VSecure by the `cam` children of `list`; a partial list only adds and
    // amends. All or nothing: on an error (recorded: 101 or 102) the table stays as it was.
    // On other models than RNB-K408 the scrambling keys are regenerated afterwards; a failure of
    // that (911) leaves the list stored. Returns whether everything succeeded.
    bool apply(const document::XmlNode* list, bool partial);

  private:
    bool writeList(sqlite3* db, const document::XmlNode& list, bool partial);
    bool writeCam(sqlite3* db, const document::XmlNode& cam, const char* serialNumber,
                  bool partial);
};

}  // namespace tarvo_remote_control
