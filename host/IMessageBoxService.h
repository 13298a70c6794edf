#pragma once
// The host's message boxes. The engine and the dialogs' rules never talk to a window system
// themselves: a windowed host shows real boxes, the command-line host prints them, tests record
// them.
#include <string>

namespace kitra::host {

// The icon of a box; Plain is a box with no icon.
enum class MessageStyle { Plain, Information, Critical, Exclamation, Question };
enum class MessageButtons { Ok, YesNo };
enum class MessageAnswer { Ok, Yes, No };

class IMessageBoxService {
public:
    virtual ~IMessageBoxService() = default;
    // Shows the text with the icon, buttons and title given, and returns the button chosen.
    virtual MessageAnswer Show(const std::string& text, MessageStyle style,
                               MessageButtons buttons, const std::string& title) = 0;
};

}  // namespace kitra::host
