#include "lab.h"

#include <stdio.h>
#include <stdlib.h>
#include <sys/wait.h>
#include <unistd.h>

namespace {

std::string LabScript(const std::string& args) {
    return std::string("bash ") + TESMIR_LAB_SCRIPT + " " + args + " 2>&1";
}

}  // namespace

int RunCommand(const std::string& command, std::string* out) {
    FILE* pipe = popen(command.c_str(), "r");
    if (pipe == nullptr) return -1;
    char buffer[512];
    size_t n;
    while ((n = fread(buffer, 1, sizeof(buffer), pipe)) > 0) {
        if (out != nullptr) out->append(buffer, n);
    }
    const int status = pclose(pipe);
    return WIFEXITED(status) ? WEXITSTATUS(status) : -1;
}

const std::string& SupplicantLab::Unavailable() {
    static const std::string* reason = [] {
        std::string out;
        if (RunCommand(LabScript("check"), &out) == 0) return new std::string();
        while (!out.empty() && out.back() == '\n') out.pop_back();
        return new std::string(out.empty() ? "supplicant lab check failed" : out);
    }();
    return *reason;
}

SupplicantLab::SupplicantLab(bool withAuthenticator) {
    char dirTemplate[] = "/tmp/tesmir-lab.XXXXXX";
    if (mkdtemp(dirTemplate) == nullptr) return;
    dir_ = dirTemplate;
    std::string out;
    if (RunCommand(LabScript("up " + dir_ + (withAuthenticator ? " --hostapd" : "")), &out) != 0) {
        fprintf(stderr, "supplicant lab failed to start:\n%s\n", out.c_str());
        return;
    }
    while (!out.empty() && out.back() == '\n') out.pop_back();
    socketPath_ = out.substr(out.rfind('\n') + 1);
}

SupplicantLab::~SupplicantLab() {
    if (dir_.empty()) return;
    RunCommand(LabScript("down " + dir_));
    RunCommand("rm -rf '" + dir_ + "'");
}

bool SupplicantLab::StopSupplicant() {
    return RunCommand(LabScript("stop-supplicant " + dir_)) == 0;
}

bool SupplicantLab::StartSupplicant() {
    return RunCommand(LabScript("start-supplicant " + dir_)) == 0;
}
