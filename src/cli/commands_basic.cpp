// The commands that every install has: what the tool sees, the demo install, the options.

#include "session.h"

#include "velmora/core/about.h"
#include "velmora/core/installinfo.h"
#include "velmora/core/services.h"
#include "velmora/demo/demoinstall.h"
#include "velmora/routes/routes.h"

namespace velmora::cli {

namespace {

bool noArguments(Session& s) {
    if (s.g.rest.empty())
        return true;
    s.fail("unexpected argument '" + s.g.rest.front() + "'");
    return false;
}

int cmdInfo(Session& s) {
    if (!noArguments(s))
        return Error;
    s.start();
    if (!s.requireRoot())
        return Error;
    InstallSummary info = summarizeInstall(s.ctx.railWorks(), s.ctx.resolver);
    s.out << "Simulator root: " << info.root.string() << '\n';
    if (!info.hasExecutable)
        s.out << "  (RailWorks.exe is not in this folder)\n";
    s.out << "Products: " << info.products.size() << '\n';
    for (const auto& p : info.products)
        s.out << "  " << p.provider << '\\' << p.product << '\n';
    // The routes as the route list counts them: GUID folders with a named RouteProperties.xml.
    const auto routes = routes::listRoutes(s.ctx);
    s.out << "Routes: " << routes.size() << '\n';
    for (const auto& r : routes)
        s.out << "  " << r.folder << "  " << shown(r.name) << '\n';
    return Success;
}

int cmdDemoInstall(Session& s) {
    const Arguments a = parseArguments(s.g.rest, {"--scale", "--seed"}, {});
    if (!a.problem.empty())
        return s.fail(a.problem);
    demo::DemoOptions options;
    for (const auto& [name, text] : a.options) {
        auto n = parseNumber(text);
        if (!n || *n < 0 || (name == "--scale" && (*n < 1 || *n > 10000)))
            return s.fail(name + " needs a whole number, not '" + text + "'");
        if (name == "--scale")
            options.scale = static_cast<int>(*n);
        else
            options.seed = static_cast<std::uint64_t>(*n);
    }
    if (a.plain.empty())
        return s.fail("needs the folder to write into");
    if (a.plain.size() > 1)
        return s.fail("unexpected argument '" + a.plain[1] + "'");
    const fs::path dir(a.plain.front());
    auto result = demo::generateDemoInstall(dir, options, &s.ui);
    if (!result.ok)
        return s.fail(result.error.empty() ? "stopped" : result.error);
    if (!s.g.quiet)
        s.out << "Wrote a demo install of " << result.files << " files with " << result.products.size()
              << " products and " << result.routes.size() << " routes to " << dir.string() << '\n';
    return Success;
}

int cmdOptions(Session& s) {
    if (!noArguments(s))
        return Error;
    s.start();
    for (const auto& [label, value] : optionsSummary(s.ctx))
        s.out << label << ": " << value << '\n';
    s.out << "Program folder: " << s.ctx.appPath().string() << '\n';
    s.out << "Data folder: " << s.ctx.dataPath().string() << '\n';
    return Success;
}

int cmdGuid(Session& s) {
    if (!noArguments(s))
        return Error;
    s.out << formatGuidForms(makeGuidForms()) << '\n';
    return Success;
}

int cmdVersion(Session& s) {
    if (!noArguments(s))
        return Error;
    s.out << aboutText();
    return Success;
}

} // namespace

std::vector<Command> basicCommands() {
    return {
        {"info", "", "the simulator root, its products and its routes", cmdInfo},
        {"demo-install", "DIR [--scale N] [--seed S]", "write a demo simulator install into DIR", cmdDemoInstall},
        {"options", "", "the paths and language in use", cmdOptions},
        {"guid", "", "new identifiers in the forms the documents use", cmdGuid},
        {"version", "", "the version, licence and libraries of the program (also --version)", cmdVersion, false},
    };
}

} // namespace velmora::cli
