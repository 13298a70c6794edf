#pragma once
// The rules of the contents dialog frmKitraLogContents: its caption and the log text it shows.
#include <string>

#include "host/HostServices.h"
#include "log/KitraLog.h"

namespace kitra {

// The dialog's title, the restaurant, " (", the import date in the host's general date form
// and ")".
std::string LogContentsCaption(const host::HostServices& services, const KitraLog& record);

// The log's text with every line feed made a carriage return and a line feed, whatever stands
// before it, so that every line shows on a line of its own.
std::string LogContentsText(const std::string& contents);

// The host's own conventions for numbers and dates shown as text.
TextConventions HostTextConventions(const host::IApplication& application);

}  // namespace kitra
