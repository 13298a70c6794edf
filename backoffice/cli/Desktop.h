#pragma once
// kitra-host's windowed part (the module kitra-host-desktop), loaded by the commands that open
// a dialog and by no other: it brings the Qt application object and the real message boxes.
#include <string>

#include "host/IMessageBoxService.h"

namespace kitra::backoffice::cli {

class Desktop {
public:
    // Loads the module and readies the application object; fails with an Error that says why
    // (no module, no screen).
    Desktop();
    ~Desktop();
    Desktop(const Desktop&) = delete;
    Desktop& operator=(const Desktop&) = delete;

    host::IMessageBoxService& MessageBoxes() { return *boxes_; }

private:
    void* handle_ = nullptr;
    host::IMessageBoxService* boxes_ = nullptr;
};

// The module file: beside the program, else the one built with it.
std::string DesktopModulePath();

}  // namespace kitra::backoffice::cli
