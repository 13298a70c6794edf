#pragma once
// Every suite of dialog tests, run one after the other under one Qt application object.
#include <QObject>
#include <vector>

namespace kitra::testing {

QObject* NewLogViewerGuiTest();
QObject* NewSettingsGuiTest();

inline std::vector<QObject*> GuiTestSuites() { return {NewLogViewerGuiTest(), NewSettingsGuiTest()}; }

}  // namespace kitra::testing
