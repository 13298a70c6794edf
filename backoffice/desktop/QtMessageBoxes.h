#pragma once
// The windowed host's message boxes: each one a real Qt message box with its icon, buttons and
// title, on top of whatever window is open.
#include "host/IMessageBoxService.h"

namespace kitra::backoffice {

class QtMessageBoxes final : public host::IMessageBoxService {
public:
    host::MessageAnswer Show(const std::string& text, host::MessageStyle style,
                             host::MessageButtons buttons, const std::string& title) override;
};

}  // namespace kitra::backoffice
