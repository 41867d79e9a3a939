#pragma once
// The template files of data/Templates and what fills them: a template is a piece of document
// text with tokens (`aaaaaa`, `xxxxx`) that a command replaces by values before it joins the
// piece into a document. Values a user typed pass through documentText() first, so that the
// document stays well-formed whatever the name holds.

#include <functional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace velmora {

class AppContext;

// A template of data/Templates by name, found without regard to letter case. Empty, with
// `error` naming the file, when it is missing or empty.
std::string readTemplate(AppContext& ctx, std::string_view name, std::string& error);
// The template with every token replaced, each token in turn, in one pass: a value that holds
// a token's letters stays as it is.
std::string fillTemplate(std::string text, const std::vector<std::pair<std::string, std::string>>& tokens);

// A name as the program shows it: the XML escapes undone and the letters repaired.
std::string shownName(std::string_view documentText);
// A name typed by the user (UTF-8) as the document holds it: &, <, >, ' and " in the forms the
// codec writes them, other characters as UTF-8.
std::string documentText(std::string_view typed);

// Where new ids and keys come from; tests put in their own.
struct IdSource {
    std::function<double()> fraction; // a random number in [0, 1)
    std::function<std::string()> guid;
};
IdSource systemIds();
// A new id: nine digits, "000000000", never starting with 0 (the document keeps it as a
// number, so leading zeros would not come back).
std::string randomId(const IdSource& ids);

} // namespace velmora
