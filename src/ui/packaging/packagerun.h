#pragma once
// What the packaging screens share: a package made off the GUI thread with progress and Abort,
// and its end: the report, where it was saved, and the offer to zip it.

#include "velmora/packaging/packaging.h"

#include <functional>
#include <string>

class QWidget;

namespace velmora {
class AppContext;
class UserInterface;
} // namespace velmora

namespace velmora::ui {

// Runs `make` on a worker thread; the screen stays alive and its Abort stops the copy.
packaging::PackageReport runPackage(AppContext& ctx, const std::string& label,
                                    const std::function<packaging::PackageReport(UserInterface&)>& make);

// Says why a refused package was refused; otherwise shows the report in a window of its own,
// then "<saved><path>" and, when `zipQuestion` is not empty, asks it: Yes opens frmNewZip with
// the package folder in it. Returns the report window (null when refused) for the tests.
QWidget* endPackage(AppContext& ctx, QWidget* parent, const packaging::PackageReport& report,
                    const std::string& saved, const std::string& zipQuestion);

} // namespace velmora::ui
