#pragma once
// Which language entry each control of the main screen takes, in the order they are assigned:
// where a control appears twice, the later assignment stands.

#include <span>
#include <string_view>

namespace velmora {

struct CaptionAssignment {
    std::string_view control;
    int entry;
};

std::span<const CaptionAssignment> editorCaptionAssignments();

// The entry a control ends up with (the last assignment), or 0 when it has none.
int editorCaptionEntry(std::string_view control);

} // namespace velmora
