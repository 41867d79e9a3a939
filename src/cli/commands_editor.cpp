// The file editor's round trip for scripts: a document out as XML, XML back into a document.

#include "session.h"

#include "velmora/core/document.h"
#include "velmora/core/services.h"

#include <iostream>

namespace velmora::cli {

namespace {

// The kinds the editor opens as text rather than through the codec.
bool isXmlKind(const std::string& extension) {
    for (const char* kind : {"xml", "cost", "tgt", "proxyxml"})
        if (iequals(extension, kind))
            return true;
    return false;
}

int cmdOpen(Session& s) {
    const Arguments a = parseArguments(s.g.rest, {"--xml"}, {});
    if (!a.problem.empty())
        return s.fail(a.problem);
    if (a.plain.size() != 1)
        return s.fail(a.plain.empty() ? "needs the document to open" : "unexpected argument '" + a.plain[1] + "'");
    const fs::path file(a.plain.front());
    std::string nameWithDot, extension;
    splitDocumentName(file, nameWithDot, extension);

    EditorDocument doc;
    std::string xml;
    const ConvertResult opened = isXmlKind(extension) ? openXmlDocument(file, s.ctx.tempFiles(), doc, xml)
                                                       : openBinaryDocument(file, s.ctx.tempFiles(), doc, xml);
    if (!opened)
        return s.fail(opened.message);
    const auto out = a.value("--xml");
    if (!out) {
        s.out << xml;
        return Success;
    }
    if (const WriteResult written = s.ctx.files().write(*out, xml); !written)
        return s.fail(written.message);
    if (!s.g.quiet)
        s.out << "Wrote the XML of " << file.string() << " to " << *out << '\n';
    return Success;
}

int cmdSave(Session& s) {
    const Arguments a = parseArguments(s.g.rest, {"--to"}, {});
    if (!a.problem.empty())
        return s.fail(a.problem);
    if (a.plain.size() != 1)
        return s.fail(a.plain.empty() ? "needs the XML file to save" : "unexpected argument '" + a.plain[1] + "'");
    const auto target = a.value("--to");
    if (!target)
        return s.fail("needs --to FILE, the document to replace");
    const fs::path xmlFile(a.plain.front());
    if (!FileExists(xmlFile))
        return s.fail(xmlFile.string() + ": the file does not exist or cannot be read");
    const std::string xml = ReadTextFile(xmlFile);

    EditorDocument doc;
    doc.path = *target;
    splitDocumentName(doc.path, doc.nameWithDot, doc.extension);
    if (isXmlKind(doc.extension))
        return s.fail(doc.path.string() + ": an XML document needs no conversion; copy the text instead");
    if (!MakePath(s.ctx.tempFiles()))
        return s.fail(s.ctx.tempFiles().string() + ": the scratch folder cannot be made");
    doc.tempBase = s.ctx.tempFiles() / doc.nameWithDot;

    const SaveResult saved = saveBinaryDocument(s.ctx.files(), doc, xml, [&](const std::string& step) {
        if (!s.g.quiet)
            s.out << step << '\n';
    });
    if (!saved.ok)
        return s.fail(saved.message);
    if (!s.g.quiet) {
        if (!saved.backup.empty())
            s.out << "Backup: " << saved.backup.string() << '\n';
        s.out << "Saved " << saved.written.string() << '\n';
    }
    return Success;
}

} // namespace

std::vector<Command> editorCommands() {
    return {
        {"open", "FILE [--xml OUT]", "a document as XML, to OUT or standard output", cmdOpen},
        {"save", "XMLFILE --to FILE", "XML back into FILE, keeping a numbered backup of it", cmdSave},
    };
}

} // namespace velmora::cli
