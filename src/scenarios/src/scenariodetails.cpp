// The details grid of a scenario and its saved forms.

#include "velmora/scenarios/scenariodetails.h"

#include "velmora/assets/assetgrid.h"
#include "velmora/core/xmltext.h"
#include "velmora/scenarios/instructions.h"

#include <algorithm>
#include <cstdlib>
#include <optional>

namespace velmora::scenarios {

const char* const kGridFilter = "Comma Separated (*.csv)|*.csv|Excel file (*.xls)|*.xls|Tabbed text file (*.txt)|*.txt";

namespace {

constexpr std::size_t npos = std::string_view::npos;

// The screen's own table of service classes; its spelling differs from the editor's.
constexpr const char* kServiceClasses[] = {"Special",          "Light Engine",        "Express Passenger",
                                           "Stopping Passenger", "Hight-speed Freight", "Express Freight",
                                           "Standard Freight", "Low-speed Freight",   "Other Freight",
                                           "Empty Stock",      "International"};

// The first value of `tag` at or after `from` (0-based) in `text`, or nothing.
std::optional<std::string> valueFrom(std::string_view text, std::size_t from, std::string_view tag) {
    std::string value;
    std::size_t pos = from + 1;
    GetDetail(text, pos, tag, value, {Match::Text});
    if (!pos)
        return std::nullopt;
    return value;
}

// Where a vehicle stands: the ribbon under its first follower, and the tile of its own position.
struct Place {
    std::string ribbon;
    std::optional<Tile> tile;
};

std::optional<long> whole(const std::optional<std::string>& text) {
    if (!text || text->empty())
        return std::nullopt;
    char* end = nullptr;
    const long v = std::strtol(text->c_str(), &end, 10);
    return end && *end == '\0' ? std::optional<long>(v) : std::nullopt;
}

Place placeOf(std::string_view vehicle) {
    Place p;
    if (const std::size_t at = InStr(1, vehicle, "<RibbonID", Match::Text); at)
        p.ribbon = valueFrom(vehicle, at - 1, "DevString").value_or("");
    if (const std::size_t far = InStr(1, vehicle, "<RFarPosition", Match::Text); far) {
        const std::size_t x = InStr(far, vehicle, "<X>", Match::Text);
        const std::size_t z = x ? InStr(x, vehicle, "<Z>", Match::Text) : 0;
        if (x && z) {
            const auto tx = whole(valueFrom(vehicle.substr(0, z - 1), x - 1, "Distance"));
            const auto tz = whole(valueFrom(vehicle, z - 1, "Distance"));
            if (tx && tz)
                p.tile = Tile{*tx, *tz};
        }
    }
    return p;
}

// The places of the vehicles of a consist, front to back.
std::vector<Place> placesOf(std::string_view consist) {
    std::vector<Place> places;
    for (std::size_t at = InStr(1, consist, "<cOwnedEntity", Match::Text); at;) {
        const std::size_t end = InStr(at, consist, "</cOwnedEntity>", Match::Text);
        places.push_back(placeOf(consist.substr(at - 1, (end ? end : consist.size() + 1) - at)));
        if (!end)
            break;
        at = InStr(end, consist, "<cOwnedEntity", Match::Text);
    }
    return places;
}

// A vehicle's place by the index: the tile of its ribbon, else the tile of its own position.
std::string locationText(const Place& p, const TrackIndex& index) {
    if (const auto tile = index.tileOf(p.ribbon))
        return onTrackText(*tile);
    return p.tile ? onTrackText(*p.tile) : std::string();
}

void addInstructionRows(std::vector<std::vector<std::string>>& rows, const std::vector<Instruction>& instructions) {
    std::vector<std::string> drivers{"Drivers Instructions"}, pickingUp{"Picking Up Here"}, arrival{"Arrival Time "},
        departure{"Departure Time "}, triggered{"Triggered Instructions"}, untriggered{"Untriggered Instructions"};
    for (const Instruction& in : instructions) {
        const std::string kind = instructionKindText(in.kind) +
                                 (in.activationLevel.empty() ? std::string() : " (level " + in.activationLevel + ")");
        const bool pickUp = in.kind == "cPickupPassengers";
        const std::size_t columns = std::max<std::size_t>(1, in.targets.size());
        for (std::size_t t = 0; t < columns; ++t) {
            const InstructionTarget* target = t < in.targets.size() ? &in.targets[t] : nullptr;
            std::string what = kind;
            if (target && !target->displayName.empty())
                what += ": " + target->displayName;
            if (!in.displayText.empty())
                what += " - " + in.displayText;
            drivers.push_back(what);
            pickingUp.push_back(target ? (target->pickingUp || pickUp ? "Yes" : "No") : "");
            arrival.push_back(target ? (target->arrivalTime.empty() ? target->dueTime : target->arrivalTime) : "");
            departure.push_back(target ? target->departureTime : "");
            triggered.push_back(t == 0 ? in.triggeredText : "");
            untriggered.push_back(t == 0 ? in.untriggeredText : "");
        }
    }
    for (auto* row : {&drivers, &pickingUp, &arrival, &departure, &triggered, &untriggered})
        rows.push_back(std::move(*row));
}

} // namespace

std::string detailsServiceClass(std::string_view value) {
    const std::string v(value);
    char* end = nullptr;
    const long index = std::strtol(v.c_str(), &end, 10);
    if (v.empty() || !end || *end != '\0' || index < 0 || index >= static_cast<long>(std::size(kServiceClasses)))
        return v;
    return kServiceClasses[index];
}

std::string onTrackText(Tile tile) { return "On Track in tile " + tileText(tile); }

std::size_t DetailsGrid::columns() const {
    std::size_t n = 0;
    for (const auto& r : rows)
        n = std::max(n, r.size());
    return n;
}

DetailsGrid detailsGrid(const ScenarioDocument& doc, const TrackIndex* index, const std::string& language) {
    DetailsGrid grid;
    auto& rows = grid.rows;
    for (std::size_t i = 0; i < doc.consists.size(); ++i) {
        const Consist& c = doc.consists[i];
        const std::string_view text = consistText(doc.scenarioText, doc.consists, i);
        if (i)
            rows.push_back({});
        const auto destination = finalDestination(text);
        rows.push_back({"Service Name", c.serviceName.empty() ? std::string("Loose Consist") : c.serviceName});
        rows.push_back({"Service Class", detailsServiceClass(c.serviceClass)});
        rows.push_back({"Final Destination",
                        destination && !destination->displayName.empty() ? destination->displayName : "Not Shown"});
        rows.push_back({"Picking Up ", destination && destination->pickingUp ? "Yes" : "No"});
        rows.push_back({"Start Time", c.vehicles.empty() ? std::string() : c.vehicles.front().startTime});
        const std::vector<Place> places = index ? placesOf(text) : std::vector<Place>{};
        if (index && !places.empty())
            rows.push_back({"Origin", locationText(places.front(), *index)});
        if (const auto instructions = readInstructions(text, language); !instructions.empty())
            addInstructionRows(rows, instructions);
        for (const Vehicle& v : c.vehicles) {
            rows.push_back({"", v.name, v.number, v.path.empty() ? v.blueprint.blueprintId : v.path});
        }
        // Where each vehicle stands, in the order of the rows above.
        if (index && !places.empty()) {
            std::vector<std::string> location{"Location"};
            for (const Place& p : places)
                location.push_back(locationText(p, *index));
            rows.push_back(std::move(location));
        }
    }
    return grid;
}

bool saveDetailsGrid(WriteService& files, const std::filesystem::path& file, const DetailsGrid& grid,
                     std::string* error) {
    return assets::saveList(files, file, grid.rows, "Scenario details", error);
}

} // namespace velmora::scenarios
