#pragma once
// Quick Drive consists and fragments: new documents in a product's PreLoad folder, assembled
// fresh from the templates QD1.txt to QD5.txt (a consist) or QDF1.txt, QD2.txt and QDF3.txt (a
// fragment) of data/Templates, encoded whole, then written with a numbered backup as one
// journal entry.
//
// A consist is QD1, one QD2 a vehicle, QD3 (the names, engine type and era), one QD4 a route,
// and QD5 (drivable flag, consist type, pantograph and rail shoes). A fragment is QDF1 (its
// name), one QD2 a vehicle, and QDF3.

#include "velmora/consists/consisttemplates.h"

#include <optional>
#include <string>
#include <vector>

namespace velmora::consists {

// The program's words in boxes.
extern const char* const kNoRoute;          // "You do not appear to have selected a route"
extern const char* const kConsistCopied;    // "Your new consist has been copied to" / "your PreLoad folder."
extern const char* const kFragmentRefused;  // the name lacks "Fragment", with "e.g. Scotsman Fragment"
extern const char* const kNotInProduct;     // the PreLoad folder is not inside a product
// The journal's names for the two builds.
extern const char* const kBuildConsistCommand;  // "Build QD Consist"
extern const char* const kBuildFragmentCommand; // "Build QD Fragment"

// The consist types as the list shows them ("Consist Type Passenger Regional" ...).
const std::vector<std::string>& consistTypes();
// A type as the document holds it: blanks removed and a leading "e" ("eConsistTypePassengerRegional").
// A value already in that form stays as it is.
std::string consistTypeValue(const std::string& shown);
// The three engine types of the list.
const std::vector<std::string>& engineTypes();

// One row of the vehicle grid: a vehicle's blueprint or a fragment's, its path below the
// product ending in .xml, and "eFalse" or "eTrue".
struct QDVehicle {
    std::string provider, product, blueprintId;
    std::string flipped = "eFalse";
};
// "eTrue" for "eFalse" and the other way round.
std::string flippedOther(const std::string& flipped);

// What frmQDSelect gathers. Texts are UTF-8 as typed.
struct QDMetadata {
    std::string locoName, displayName, consistName;
    std::string locoType = "Diesel";
    bool drivable = true, pantograph = false, thirdRail = false, fourthRail = false;
    std::string eraStart, eraEnd; // empty gives "2000" and "2050"
    std::string consistType;      // as shown or as stored
    std::vector<std::string> routes; // route folders
};

// The folder the documents go to, and the product it lies in.
struct PreloadTarget {
    fs::path folder;
    std::string provider, product;
    std::string relative; // the folder below the product, with backslashes ("PreLoad")
};
// The target for a folder that must lie below <RailWorks>/Assets/<Provider>/<Product>;
// empty with `error` (kNotInProduct and the folder) otherwise.
std::optional<PreloadTarget> preloadTarget(AppContext& ctx, const fs::path& folder, std::string& error);
// <RailWorks>/Assets/<provider>/<product>/PreLoad. Provider and product must each be one name.
std::optional<PreloadTarget> productPreload(AppContext& ctx, const std::string& provider, const std::string& product,
                                            std::string& error);

// The fragments of the folder: every .bin or .xml file with "Fragment" in its name, as a row
// that a consist can take (path "<folder below the product>\<name>.xml", not flipped). Sorted.
std::vector<QDVehicle> availableFragments(const PreloadTarget& target);

// The file a document of this name is written to: one name inside the target folder.
fs::path documentFile(const PreloadTarget& target, const std::string& name);

// Whether a fragment's name says it is one.
bool isFragmentName(const std::string& name);

// The texts of the templates a build needs; `error` names the first one missing.
struct QDTemplates {
    std::string head, vehicle, metadata, route, tail; // QD1, QD2, QD3, QD4, QD5
    std::string fragmentHead, fragmentTail;           // QDF1, QDF3
};
bool readConsistTemplatesQD(AppContext& ctx, QDTemplates& t, std::string& error);
bool readFragmentTemplatesQD(AppContext& ctx, QDTemplates& t, std::string& error);

// The document texts, before encoding.
std::string qdConsistText(const QDTemplates& t, const QDMetadata& meta, const std::vector<QDVehicle>& vehicles,
                          const IdSource& ids);
std::string qdFragmentText(const QDTemplates& t, const std::string& name, const std::vector<QDVehicle>& vehicles,
                           const IdSource& ids);

struct QDBuildResult {
    bool ok = false;
    std::string message; // for the box: kConsistCopied, or what stopped the build
    std::string detail;  // why, naming the file, when it failed
    fs::path file;
    fs::path backup; // empty when there was no file of that name
    bool created = false;
    explicit operator bool() const { return ok; }
};

// Build QD Consist: refused with kNoRoute when no route is given. `ids` null takes the system's.
QDBuildResult buildQDConsist(AppContext& ctx, const PreloadTarget& target, const QDMetadata& meta,
                             const std::vector<QDVehicle>& vehicles, const IdSource* ids = nullptr);
// Build QD Fragment: refused with kFragmentRefused when the name lacks "Fragment".
QDBuildResult buildQDFragment(AppContext& ctx, const PreloadTarget& target, const std::string& name,
                              const std::vector<QDVehicle>& vehicles, const IdSource* ids = nullptr);

} // namespace velmora::consists
