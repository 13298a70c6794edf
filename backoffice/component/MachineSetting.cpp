#include "backoffice/component/MachineSetting.h"

#include <cerrno>
#include <cstdlib>
#include <iostream>

#include "backoffice/ConsoleServices.h"

namespace kitra::backoffice {

std::string DataFolderSettingName() { return "a variável de ambiente KITRA_HOST_DATA"; }

std::string DataFolderSetting() {
    const char* folder = std::getenv("KITRA_HOST_DATA");
    return folder != nullptr ? folder : "";
}

std::string ProcessProgramName() { return program_invocation_short_name; }

std::unique_ptr<host::IMessageBoxService> ProcessMessageBoxes() {
    return std::make_unique<ConsoleMessageBoxes>(nullptr, std::cout);
}

}  // namespace kitra::backoffice
