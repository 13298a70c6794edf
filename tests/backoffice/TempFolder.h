#pragma once
// Temporary folders and back offices for the back office's own tests.
#include <filesystem>
#include <memory>
#include <string>

#include "backoffice/BackOffice.h"
#include "tests/hostsupport/TempFolder.h"

namespace kitra::backoffice::testing {

using kitra::testing::TempFolder;

// A new back office (made by BackOffice::Create) in a temporary folder, opened.
class TempBackOffice {
public:
    TempBackOffice() : data_(folder_.Path() / "data") {
        BackOffice::Create(data_);
        office_ = std::make_unique<BackOffice>(data_);
    }
    BackOffice& operator*() { return *office_; }
    BackOffice* operator->() { return office_.get(); }
    const std::filesystem::path& DataFolder() const { return data_; }
    std::filesystem::path File() const { return BackOffice::FileIn(data_); }
    // Closes and opens the back office again, as a new program would.
    void Reopen() {
        office_.reset();
        office_ = std::make_unique<BackOffice>(data_);
    }

private:
    TempFolder folder_;
    std::filesystem::path data_;
    std::unique_ptr<BackOffice> office_;
};

// A salesman with only a number and a name, the least a test needs.
inline host::Salesman NamedSalesman(double id, std::string name) {
    host::Salesman salesman;
    salesman.SalesmanID = id;
    salesman.Name = std::move(name);
    return salesman;
}

}  // namespace kitra::backoffice::testing
