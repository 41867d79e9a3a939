#pragma once
// The physical values of a rail vehicle and of its engine simulation, as rows of name, value
// and position. The rows come from fixed lists of tags, read in document order: a section of a
// list is looked for as "<Section", its rows only between it and "</Section", so that a tag
// that stands in several sections (MaxForce) gives one row for each and a change reaches the
// element at the row's own position.

#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

namespace velmora::physics {

enum class SimKind { DieselElectric, Steam };

enum class RowKind {
    Value,     // a plain element: its text can be changed
    Reference, // a blueprint reference shown as Provider\Product\BlueprintID; not changed here
    Table,     // a CsvFile naming a .dcsv table
    Empty,     // "<Tag/>" or an element that holds elements: nothing to change
};

struct PhysicsRow {
    std::string section;      // the sections of the list around the row, joined by '/'
    std::string item;         // the row's name as the grid shows it
    std::string value;        // the element's text, entities decoded
    std::string key;          // the tag a change looks for; empty for a reference
    std::size_t position = 0; // one-based position of the "<key" the row was read at
    RowKind kind = RowKind::Value;
    std::string type;         // the element's d:type ("sFloat32", "cDeltaString"), empty when none

    // "Section/Item", or the item alone at the top.
    std::string qualifiedName() const;
};

// The rows of a rail vehicle blueprint (engine, wagon or tender).
std::vector<PhysicsRow> vehicleRows(std::string_view xml);
// The rows of an engine simulation blueprint, by the list of its kind.
std::vector<PhysicsRow> simulationRows(std::string_view xml, SimKind kind);

// Whether the text is an engine simulation blueprint (cEngineSimBlueprint).
bool isSimulationBlueprint(std::string_view xml);
// The list a simulation is shown with: steam when the simulation is a steam one or the vehicle
// says EngineType Steam.
SimKind simKindOf(std::string_view vehicleXml, std::string_view simXml);

// Finds rows by what a user types: "Item", "Section/Item" (the last sections suffice), "/Item"
// (the row outside every section) or "Item@position". Letter case is ignored. Returns the indexes of every row that fits.
std::vector<std::size_t> findRows(const std::vector<PhysicsRow>& rows, std::string_view name);

// Writes a typed value (UTF-8) into the element of `row`, searched as "<key" from the row's
// position. A numeric element takes only a number of its type (an integer for sInt/sUInt, 0 or
// 1 for bool). Returns what is wrong (empty on success): "The Key <key> was not found" when
// the element is not there or has no value to replace, or why the value does not fit.
std::string putRowValue(std::string& xml, const PhysicsRow& row, std::string_view typedUtf8);

// The one replacement of an element's value: the text between the '>' of the element at `open`
// (one-based, at its '<') and its closing tag becomes `text` (escaped for XML), and a stale
// d:alt_encoding is dropped so that the new text is what the codec reads. Returns false when
// the element has no closing tag of its own.
bool replaceElementText(std::string& xml, std::size_t open, std::string_view text);

// Whether `value` is a number of the element type `type`; empty types take anything.
// Returns what is wrong, empty when it fits.
std::string checkValueForType(std::string_view value, std::string_view type);

} // namespace velmora::physics
