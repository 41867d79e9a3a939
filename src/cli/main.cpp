#include "cli.h"

#include "velmora/core/textboundary.h"

#include <iostream>

#include <unistd.h>

int main(int argc, char** argv) {
    std::vector<std::string> args(argv + 1, argv + argc);
    // On a terminal, control characters from names and files are shown, not obeyed; output
    // that goes to a file or a pipe is left as it is.
    velmora::TerminalBuffer outBuffer(std::cout.rdbuf()), errBuffer(std::cerr.rdbuf());
    std::ostream terminalOut(&outBuffer), terminalErr(&errBuffer);
    std::ostream& out = ::isatty(STDOUT_FILENO) ? terminalOut : std::cout;
    std::ostream& err = ::isatty(STDERR_FILENO) ? terminalErr : std::cerr;
    const int code = velmora::cli::run(args, out, err);
    out.flush();
    err.flush();
    return code;
}
