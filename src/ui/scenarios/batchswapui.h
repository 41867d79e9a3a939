#pragma once
// The screens' side of a swap over every scenario of a route: the batch off the GUI thread with
// progress and Abort, and what it did (or would do) shown per scenario.

#include "velmora/core/appcontext.h"
#include "velmora/scenarios/batchswap.h"

#include <QString>
#include <functional>

class QWidget;

namespace velmora::ui {

// Runs `batch` on a worker thread with a progress box labelled `label`; the options it is given
// carry the worker's interface. A batch stopped by Abort gives a result that says so.
scenarios::BatchResult
runBatchSwap(AppContext& ctx, const std::string& label, scenarios::BatchOptions options,
             const std::function<scenarios::BatchResult(const scenarios::BatchOptions&)>& batch);

// The per-scenario report in frmReport, titled `title`, when there is anything to list.
void showBatchReport(AppContext& ctx, const scenarios::BatchResult& result, const QString& title,
                     QWidget* parent);

} // namespace velmora::ui
