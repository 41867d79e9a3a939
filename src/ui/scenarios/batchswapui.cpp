// Swaps over a whole route from the screens: off the GUI thread, then the report.

#include "batchswapui.h"

#include "../common/backgroundjob.h"
#include "../common/frmreport.h"

namespace velmora::ui {

scenarios::BatchResult
runBatchSwap(AppContext& ctx, const std::string& label, scenarios::BatchOptions options,
             const std::function<scenarios::BatchResult(const scenarios::BatchOptions&)>& batch) {
    scenarios::BatchResult result;
    const bool finished = runInBackground(ctx, label, [&](UserInterface& ui) {
        options.ui = &ui;
        result = batch(options);
    });
    if (!finished && !result.stopped && result.written == 0) {
        result.ok = false;
        result.stopped = true;
        result.message = "Stopped before anything was written.";
    }
    return result;
}

void showBatchReport(AppContext& ctx, const scenarios::BatchResult& result, const QString& title,
                     QWidget* parent) {
    const std::string text = scenarios::batchReport(result);
    if (!text.empty())
        frmReport::show(ctx, title, text, parent);
}

} // namespace velmora::ui
