#pragma once
// The back office as an application: its title, its localised (Portuguese) texts, its text
// conventions, its log folder (logs/ in the data folder), and whether its document series
// allow documents made elsewhere.
#include <filesystem>

#include "backoffice/Database.h"
#include "host/IApplication.h"

namespace kitra::backoffice {

class Application final : public host::IApplication {
public:
    Application(Database& database, std::filesystem::path dataFolder)
        : database_(database), dataFolder_(std::move(dataFolder)) {}

    bool ExternalUnsignedSeriesActive() const override;
    std::string Title() const override;
    std::string LogFolder() const override;
    std::string Text(long id) const override;
    std::string GeneralDateForm() const override;
    char DecimalSeparator() const override;

private:
    Database& database_;
    std::filesystem::path dataFolder_;
};

}  // namespace kitra::backoffice
