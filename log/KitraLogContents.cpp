#include "log/KitraLogContents.h"

#include "log/KitraLogViewer.h"

namespace kitra {

TextConventions HostTextConventions(const host::IApplication& application) {
    return {application.DecimalSeparator(), application.GeneralDateForm()};
}

std::string LogContentsCaption(const host::HostServices& services, const KitraLog& record) {
    const TextConventions conventions = HostTextConventions(*services.application);
    return services.application->Text(kLogContentsTitleText) + record.RestaurantID + " (" +
           Variant(record.ImportDate).ToText(conventions) + ")";
}

std::string LogContentsText(const std::string& contents) {
    std::string text;
    text.reserve(contents.size() + contents.size() / 16);
    for (const char c : contents) {
        if (c == '\n') text += '\r';
        text += c;
    }
    return text;
}

}  // namespace kitra
