#pragma once
// The host application object: its identity, where it keeps its log files, its localised texts,
// its text conventions, and whether it accepts documents numbered outside the host.
#include <string>

namespace kitra::host {

class IApplication {
public:
    virtual ~IApplication() = default;
    // True when at least one active document series is of the external unsigned kind: only
    // then may documents made elsewhere be imported into the host.
    virtual bool ExternalUnsignedSeriesActive() const = 0;
    // The application's title, used as the caption of boxes that name no caption of their own.
    virtual std::string Title() const = 0;
    // The folder for log files, without a trailing separator; it exists when this returns.
    virtual std::string LogFolder() const = 0;
    // The localised text with this identifier; an empty text for an identifier it does not know.
    virtual std::string Text(long id) const = 0;
    // The general date form, a pattern of yyyy, mm, dd, hh, nn, ss ("dd-mm-yyyy hh:nn:ss").
    virtual std::string GeneralDateForm() const = 0;
    // The decimal separator the host writes and reads numbers with.
    virtual char DecimalSeparator() const = 0;
};

}  // namespace kitra::host
