#pragma once
// The lists of tags the grids are read by.

#include <string>
#include <vector>

namespace velmora::physics::lists {

struct Field {
    enum Kind {
        Value,     // a plain element; `key` is the tag read when it differs from the name
        Reference, // a blueprint reference
        Table,     // a section holding one CsvFile
        Section,   // a section whose rows are the children, read between <name and </name
        Repeated,  // a section whose children repeat (one set of rows per repetition)
    };
    Kind kind = Value;
    std::string name;
    std::string key;
    std::vector<Field> children = {};
    bool prefix = false; // Repeated: every section whose tag begins with the name (Injector1, Injector2)
};

const std::vector<Field>& vehicleFields();
const std::vector<Field>& dieselFields();
const std::vector<Field>& steamFields();

} // namespace velmora::physics::lists
