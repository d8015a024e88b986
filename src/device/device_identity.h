// Who this controller is.
#pragma once

#include <stdexcept>
#include <string>

struct sqlite3;

namespace tarvo_remote_control {

// The identity could not be read; what() says which part of it.
class ReadConfigError : public std::runtime_error {
  public:
    using std::runtime_error::runtime_error;
};

// Serial number, MAC and model from the device's scripts, the host name from `hostname`, and the
// contract and the remote-control server from configuracionWebGlobal. One instance per process,
// loaded at start.
class DeviceIdentity {
  public:
    // Created by the first call, destroyed at process exit.
    static DeviceIdentity& instance();
    // Destroys the instance; the next instance() call makes a new, unloaded one.
    static void destroyInstance();

    // Fills what is still empty from the scripts, and the settings from the configuration
    // database, whose faults only leave the previous values in place. Returns whether anything
    // changed (always for the first load). Throws ReadConfigError when a script does not answer
    // with a value and OK, or the host name is empty. Takes 12 seconds when the database cannot be
    // read.
    bool load();

    [[nodiscard]] bool isRemoteControlActive() const { return remoteControlActive_; }
    // In the unit of the server's setting; not used by this program.
    [[nodiscard]] int getRemoteControlInterval() const { return remoteControlInterval_; }
    // Ends with "/" unless it is empty.
    [[nodiscard]] std::string getRemoteControlAddress() const { return remoteControlAddress_; }
    [[nodiscard]] std::string getRemoteControlUser() const { return remoteControlUser_; }
    [[nodiscard]] std::string getRemoteControlPassword() const { return remoteControlPassword_; }
    [[nodiscard]] std::string getSerialNumber() const { return serialNumber_; }
    [[nodiscard]] std::string getMac() const { return mac_; }
    [[nodiscard]] std::string getHostName() const { return hostName_; }
    [[nodiscard]] std::string getModel() const { return model_; }
    [[nodiscard]] std::string getContractId() const { return contractId_; }

    // Two spare values, without a meaning in this program.
    [[nodiscard]] bool getSpareFlag() const { return spareFlag_; }
    void setSpareFlag(bool flag) { spareFlag_ = flag; }
    [[nodiscard]] std::string getSpareText() const { return spareText_; }
    void setSpareText(const std::string& text) { spareText_ = text; }

    // Model predicates; names are compared exactly.
    [[nodiscard]] bool isFamilyA() const;
    [[nodiscard]] bool isRNB() const;
    [[nodiscard]] bool isWVXA() const;
    [[nodiscard]] bool isLMV() const;
    [[nodiscard]] bool isPKD() const;
    [[nodiscard]] bool isWVXB() const;

  private:
    DeviceIdentity();

    bool loadServerSettings(sqlite3* db);
    bool loadContractId(sqlite3* db);

    bool remoteControlActive_ = false;
    int remoteControlInterval_ = 1;
    std::string remoteControlAddress_;
    std::string remoteControlUser_;
    std::string remoteControlPassword_;
    std::string serialNumber_;
    std::string mac_;
    std::string hostName_;
    std::string model_;
    std::string contractId_;
    bool spareFlag_ = false;
    std::string spareText_;
    bool loaded_ = false;
};

}  // namespace tarvo_remote_control
