// A folder for private copies, which nobody else can read.
#pragma once

#include <string>

namespace tarvo_backup {

// A new folder of mode 0700 in /tmp, removed with its files when this goes. What a killed run has
// left is removed when the next one makes its own. Throws Fault (cannotWrite).
class PrivateFolder {
  public:
    PrivateFolder();
    ~PrivateFolder();
    PrivateFolder(const PrivateFolder&) = delete;
    PrivateFolder& operator=(const PrivateFolder&) = delete;

    [[nodiscard]] const std::string& path() const { return path_; }

  private:
    std::string path_;
    // Locked as long as the folder is in use.
    int handle_ = -1;
};

}  // namespace tarvo_backup
