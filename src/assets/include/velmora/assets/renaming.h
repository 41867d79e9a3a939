#pragma once
// Names of items: the choices of dlgCoachName ("Save Rolling-Stock Item"), which give a variant
// of a vehicle a suffix that says its state, and Change Name, which gives the selected items a
// new display name, numbered when there are several.

#include "velmora/assets/batchedit.h"

#include <string>
#include <vector>

namespace velmora::assets {

// dlgCoachName's "Is this item now:-" choices, in order, with the suffix each adds to both
// the file name and the display name ("Spare" adds none).
struct CoachOption {
    const char* caption;
    const char* suffix;
};
const std::vector<CoachOption>& coachOptions();
// The option whose suffix this is (compared without regard to case), or the last ("Spare").
std::size_t coachOptionOf(const std::string& suffix);
// The two names with the suffix behind each.
VariantName withSuffix(const std::string& fileName, const std::string& displayName, const std::string& suffix);

// The blueprint's file name without its extension ("HTA_Coal" for ...\HTA\HTA_Coal.bin): what a
// variant's name starts from.
std::string blueprintStem(const AssetRow& row);

// Change Name's names: with several items, a name that does not end in "#" gets " #"; a final
// "#" becomes the item's running number, from 1.
std::string numberedName(std::string typed, std::size_t index, std::size_t count);
// Name and the display name in English, French, Italian, German and Spanish take the new
// name; Dutch, Polish and Russian too where the document has them. `name` is document text.
void putDisplayName(std::string& xml, const std::string& name);

// The edit of Change Name ("Rename Selected Asset"): each row's display name from the typed
// name (UTF-8), numbered as above.
RowEditor changeNameEditor(const std::string& typed, std::size_t count);
// The name each row gets, in row order, as the grid shows it afterwards.
std::vector<std::string> changedNames(const std::string& typed, std::size_t count);

} // namespace velmora::assets
