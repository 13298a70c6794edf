#pragma once
// The host's settings contract: an object that files itself as one XML text under two keys.
#include <string>

namespace kitra::host {

class IGenericSetting {
public:
    virtual ~IGenericSetting() = default;
    virtual std::string Key1() const = 0;
    virtual std::string Key2() const = 0;
    virtual bool ExportToBranch() const = 0;
    // Replaces the object's contents from the text; never raises.
    virtual void FromXML(const std::string& xml) = 0;
    virtual std::string ToXML() const = 0;
};

}  // namespace kitra::host
