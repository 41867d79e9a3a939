#pragma once
// What the rolling-stock edits share: template look-up, the children list of a blueprint's
// container, small text operations. Internal to the assets library.

#include "velmora/assets/rsedits.h"

#include <filesystem>
#include <string>
#include <string_view>

namespace velmora::assets::rs {

// The template's text as loadRsSettings read it; empty when it was not read.
const std::string& templateText(const RsSettings& settings, const std::string& name);

// A row left as it was, and why.
RowEdit passOver(const RowInput& input, std::string reason);
// The row's new text; unchanged when it is the same as before.
RowEdit edited(const RowInput& input, std::string xml);

// The position (zero-based) just behind the "<Children>" of the blueprint's container, an
// empty "<Children/>" being opened into a pair first. npos when the blueprint has no container
// or no children list.
std::size_t openChildren(std::string& xml);

// Text that stands for a single-precision number as documents write them.
bool isNumber(const std::string& text);

// Without blanks, tabs or a CR around it.
std::string trimmed(std::string_view text);

// The document's line end, CR LF or LF, and a template's text in it, without a final one.
std::string lineEnd(const std::string& xml);
std::string withLineEnds(std::string_view block, const std::string& xml);

// Puts `block` at `where` (zero-based), e.g. directly behind "<Children>" as openChildren
// gave it, on a line of its own.
void insertChild(std::string& xml, std::size_t at, std::string_view block);

// A variant's display name into Name and the five languages, when the row loop gave one.
void nameVariant(std::string& xml, const RowInput& input);

// Every occurrence of `from`, exact case, left to right; the text put in is not searched again.
void replaceAll(std::string& text, std::string_view from, std::string_view to);

// A leading "-" removed, else one added; blanks around the value dropped.
std::string toggleSign(std::string_view value);

// The file that a backslash path below Assets names, in its real letter case where it exists.
std::filesystem::path assetPath(const RsSettings& settings, std::string_view relative);

// "...xml" -> "...bin": a blueprint id as the file on disk.
std::string binOf(std::string id);

RowEdit headLights(const RsSettings& settings, const RowInput& input);
RowEdit tailLights(const RsSettings& settings, const RowInput& input);
RowEdit locoScript(const RsSettings& settings, const RowInput& input);
RowEdit wagonScript(const RsSettings& settings, const RowInput& input);

} // namespace velmora::assets::rs
