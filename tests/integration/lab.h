#pragma once

#include <string>

// A real wpa_supplicant in a private network namespace (scripts/supplicant-lab.sh), optionally
// with an 802.1X authenticator (hostapd, EAP-MD5 user "tesmir" / "tesmir-secret") on the other
// end of its veth pair. Torn down on destruction.
class SupplicantLab {
  public:
    // Empty when labs can be made on this machine; otherwise the reason they cannot.
    static const std::string& Unavailable();

    explicit SupplicantLab(bool withAuthenticator);
    ~SupplicantLab();
    SupplicantLab(const SupplicantLab&) = delete;
    SupplicantLab& operator=(const SupplicantLab&) = delete;

    bool ok() const { return !socketPath_.empty(); }
    const std::string& socketPath() const { return socketPath_; }
    const std::string& dir() const { return dir_; }

    bool StopSupplicant();
    bool StartSupplicant();

  private:
    std::string dir_;
    std::string socketPath_;
};

// Runs a command through the shell; returns its exit status and, if |out|, its standard output.
int RunCommand(const std::string& command, std::string* out = nullptr);
