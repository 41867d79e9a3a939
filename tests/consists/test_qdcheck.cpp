// Quick Drive documents: the walk against what the demo install records of them, a hostile
// tree (undecodable documents, a link loop, a FIFO, a blueprint path leading out of Assets),
// and the in-place edit with its backup, undo and failed writes.

#include "../common/demofixture.h"
#include "../core/faultyfiles.h"
#include "../core/tempdir.h"

#include "velmora/consists/qdcheck.h"
#include "velmora/consists/qdbuild.h"
#include "velmora/consists/qdedit.h"
#include "velmora/core/convert.h"
#include "velmora/core/journal.h"

#include <QFile>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>

#include <gtest/gtest.h>

#include <fstream>
#include <map>

#include <sys/stat.h>

using namespace velmora;
namespace cs = velmora::consists;
namespace fs = std::filesystem;

namespace {

struct QdDemo {
    static constexpr const char* kName = "qdcheck";
};

class QdCheckTest : public test::DemoInstallTest<QdDemo> {
protected:
    fs::path rw() const { return s_dir / "rw"; }
    fs::path demoConsist() const { return rw() / "Assets/DemoRail/Class66Pack/PreLoad/Class66_Coal_QD.bin"; }
    fs::path demoFragment() const { return rw() / "Assets/DemoRail/Class66Pack/PreLoad/Fragments/HTA_Rake_Fragment.bin"; }

    // A context on a tree of its own, for walks and edits that must not touch the shared install.
    std::unique_ptr<AppContext> contextOn(const fs::path& root) {
        // The program's own templates: an edit that adds a route fills Templates/QD6.txt.
        auto ctx = std::make_unique<AppContext>(root / "home", fs::path(VELMORA_SOURCE_DIR) / "data", m_ui);
        ctx->setRailWorksOverride(root);
        return ctx;
    }
    // The demo consist copied into a tree of its own.
    fs::path copiedConsist(const test::TempDir& root) const {
        const fs::path file = root / "Assets/P/Q/PreLoad/QD.bin";
        fs::create_directories(file.parent_path());
        fs::copy_file(demoConsist(), file);
        return file;
    }
    static std::string decode(const fs::path& file) {
        std::string xml;
        EXPECT_TRUE(binToXmlText(file, xml)) << file;
        return xml;
    }
    static void encodeTo(const std::string& xml, const fs::path& file) {
        std::string bin;
        ASSERT_TRUE(xmlTextToBin(xml, bin));
        fs::create_directories(file.parent_path());
        std::ofstream(file, std::ios::binary) << bin;
    }
};

std::string str(const QJsonValue& v) { return v.toString().toStdString(); }

TEST_F(QdCheckTest, TheWalkAgreesWithTheDemoManifest) {
    QFile f(QString::fromStdString((rw() / "manifest.json").string()));
    ASSERT_TRUE(f.open(QIODevice::ReadOnly));
    const QJsonArray recorded = QJsonDocument::fromJson(f.readAll()).object()["quickDrive"].toArray();
    ASSERT_GE(recorded.size(), 3);

    for (int threads : {1, 4}) {
        const cs::QdListing listing = cs::checkQuickDrive(*m_ctx, rw() / "Assets", threads, nullptr);
        EXPECT_TRUE(listing.unreadable.empty());
        std::map<std::string, const cs::QdDocument*> byPath;
        for (const auto& d : listing.documents)
            byPath[d.path] = &d;
        ASSERT_EQ(byPath.size(), static_cast<std::size_t>(recorded.size()));
        for (const auto& v : recorded) {
            const QJsonObject q = v.toObject();
            SCOPED_TRACE(str(q["path"]));
            ASSERT_TRUE(byPath.count(str(q["path"])));
            const cs::QdDocument& d = *byPath[str(q["path"])];
            EXPECT_EQ(cs::qdKindName(d.kind), str(q["kind"]));
            EXPECT_EQ(d.name, str(q["name"]));
            const QJsonArray entries = q["entries"].toArray();
            ASSERT_EQ(d.entries.size(), static_cast<std::size_t>(entries.size()));
            for (std::size_t i = 0; i < d.entries.size(); ++i) {
                const QJsonObject e = entries[static_cast<int>(i)].toObject();
                EXPECT_EQ(d.entries[i].provider, str(e["provider"]));
                EXPECT_EQ(d.entries[i].product, str(e["product"]));
                EXPECT_EQ(d.entries[i].blueprint, str(e["blueprint"]));
                EXPECT_EQ(d.entries[i].flipped, e["flipped"].toBool());
                EXPECT_EQ(d.entries[i].missing, e["missing"].toBool());
            }
        }
    }
    // Every fault the Quick Drive check must find is a missing entry of the document named.
    const QJsonArray faults = QJsonDocument::fromJson([&] {
                                  f.seek(0);
                                  return f.readAll();
                              }())
                                  .object()["faults"]
                                  .toArray();
    const cs::QdListing listing = cs::checkQuickDrive(*m_ctx, rw() / "Assets", 0, nullptr);
    int qdFaults = 0;
    for (const auto& v : faults) {
        const QJsonObject fault = v.toObject();
        if (str(fault["check"]) != "qd")
            continue;
        ++qdFaults;
        bool found = false;
        for (const auto& d : listing.documents)
            if (d.path == str(fault["referencedBy"]))
                for (const auto& e : d.entries)
                    found = found || (e.missing && e.blueprint == str(fault["reference"]));
        EXPECT_TRUE(found) << str(fault["path"]);
    }
    EXPECT_EQ(static_cast<std::size_t>(qdFaults), listing.missingCount());
    EXPECT_GT(qdFaults, 0);

    // The consist's own values, as the generator wrote them.
    cs::QdDocument d;
    ASSERT_TRUE(cs::parseQuickDrive(decode(demoConsist()), d));
    EXPECT_EQ(d.engineType, "Diesel");
    EXPECT_EQ(d.eraStart, 1998);
    EXPECT_EQ(d.eraEnd, 2050);
    EXPECT_TRUE(d.drivable);
    EXPECT_EQ(d.consistType, "eConsistTypeFreightCoal");
    EXPECT_FALSE(d.routes.empty());
}

TEST_F(QdCheckTest, AHostileTreeIsWalkedToTheEndAndEveryFaultNamed) {
    test::TempDir root;
    const fs::path preload = root / "Assets/Pröv, \"A\"/Pack/PreLoad";
    fs::create_directories(preload / "Sub");
    fs::copy_file(demoConsist(), preload / "Good.bin");
    // Not a document at all, and one cut short.
    std::ofstream(preload / "Garbage.bin", std::ios::binary) << "SERZ but not really";
    const std::string whole = test::slurp(demoFragment());
    std::ofstream(preload / "Sub/Cut.bin", std::ios::binary) << whole.substr(0, whole.size() / 2);
    // A fragment whose vehicle lies outside Assets, and one whose vehicle is there.
    std::string xml = decode(demoFragment());
    const std::string real = "RailVehicles\\Freight\\HTA\\HTA_Coal.xml";
    std::string escaping = xml;
    escaping.replace(escaping.find(real), real.size(), "..\\..\\..\\..\\Outside\\HTA_Coal.xml");
    encodeTo(escaping, preload / "Sub/Escaping.bin");
    fs::create_directories(root / "Outside");
    std::ofstream(root / "Outside/HTA_Coal.bin") << "x";
    fs::create_directories(root / "Assets/DemoRail/Class66Pack/RailVehicles/Freight/HTA");
    std::ofstream(root / "Assets/DemoRail/Class66Pack/RailVehicles/Freight/HTA/HTA_Coal.bin") << "x";
    // Something in PreLoad that is neither kind.
    std::string other = xml;
    other.replace(other.find("cConsistFragmentBlueprint"), 25, "cReskinBlueprint");
    other.replace(other.find("/cConsistFragmentBlueprint"), 26, "/cReskinBlueprint");
    encodeTo(other, preload / "Other.bin");
    // A link that loops back, a link out of the tree, and a FIFO with a matching name.
    fs::create_directory_symlink(preload, preload / "Sub/Loop");
    fs::create_directory_symlink(root / "Outside", preload / "Away");
    ASSERT_EQ(::mkfifo((preload / "Pipe.bin").c_str(), 0600), 0);

    auto ctx = contextOn(root.path());
    const cs::QdListing listing = cs::checkQuickDrive(*ctx, root / "Assets", 2, nullptr);
    EXPECT_FALSE(listing.stopped);
    std::vector<std::string> paths;
    for (const auto& d : listing.documents)
        paths.push_back(d.path);
    EXPECT_EQ(paths, (std::vector<std::string>{"Assets/Pröv, \"A\"/Pack/PreLoad/Good.bin",
                                               "Assets/Pröv, \"A\"/Pack/PreLoad/Sub/Escaping.bin"}));
    // Both bad documents are named; the walk went on past them.
    ASSERT_EQ(listing.unreadable.size(), 2u);
    std::string named = listing.unreadable[0] + "\n" + listing.unreadable[1];
    EXPECT_NE(named.find("Garbage.bin"), std::string::npos) << named;
    EXPECT_NE(named.find("Cut.bin"), std::string::npos) << named;

    const cs::QdDocument& escaping6 = listing.documents[1];
    ASSERT_EQ(escaping6.entries.size(), 6u);
    EXPECT_TRUE(escaping6.entries[0].missing) << "a path out of Assets is missing even when a file is there";
    EXPECT_EQ(escaping6.entries[0].blueprint, "..\\..\\..\\..\\Outside\\HTA_Coal.xml");
    for (std::size_t i = 1; i < 6; ++i)
        EXPECT_FALSE(escaping6.entries[i].missing);
    // The good consist names fragments of another product that this tree lacks.
    EXPECT_EQ(listing.documents[0].missingCount(), 2u);
    EXPECT_EQ(listing.missingCount(), 3u);
    const std::string report = cs::qdMissingReport(listing);
    EXPECT_EQ(report.rfind(cs::kQdMissingHeading, 0), 0u);
    EXPECT_NE(report.find("Outside\\HTA_Coal.xml"), std::string::npos);
}

TEST_F(QdCheckTest, OnlyPreLoadFoldersBelowTheStartCount) {
    test::TempDir temp;
    const fs::path root = temp / "PreLoad copies";
    fs::create_directories(root / "Assets/P/Q/RailVehicles");
    fs::create_directories(root / "Assets/P/Q/preload");
    fs::copy_file(demoConsist(), root / "Assets/P/Q/RailVehicles/NotQD.bin");
    fs::copy_file(demoConsist(), root / "Assets/P/Q/preload/QD.BIN");
    auto ctx = contextOn(root);
    const cs::QdListing listing = cs::checkQuickDrive(*ctx, root / "Assets", 1, nullptr);
    ASSERT_EQ(listing.documents.size(), 1u);
    EXPECT_EQ(listing.documents[0].path, "Assets/P/Q/preload/QD.BIN");
}

TEST_F(QdCheckTest, AbortStopsTheWalkWithNothingListed) {
    m_ui.cancelAfter(0);
    const cs::QdListing listing = cs::checkQuickDrive(*m_ctx, rw() / "Assets", 2, &m_ui);
    EXPECT_TRUE(listing.stopped);
    EXPECT_TRUE(listing.documents.empty());
}

TEST_F(QdCheckTest, AnUnreadableFolderIsNamedAndTheRestListed) {
    if (::geteuid() == 0)
        GTEST_SKIP() << "every folder is readable to root";
    test::TempDir root;
    const fs::path preload = root / "Assets/P/Q/PreLoad";
    fs::create_directories(preload / "Locked");
    fs::copy_file(demoConsist(), preload / "A.bin");
    fs::permissions(preload / "Locked", fs::perms::none);
    auto ctx = contextOn(root.path());
    const cs::QdListing listing = cs::checkQuickDrive(*ctx, root / "Assets", 1, nullptr);
    fs::permissions(preload / "Locked", fs::perms::owner_all);
    EXPECT_EQ(listing.documents.size(), 1u);
    ASSERT_EQ(listing.unreadable.size(), 1u);
    EXPECT_NE(listing.unreadable[0].find("Locked"), std::string::npos);
}

TEST_F(QdCheckTest, AnEditIsWrittenWithABackupAndUndoneByteForByte) {
    test::TempDir root;
    const fs::path file = copiedConsist(root);
    const std::string before = test::slurp(file);
    auto ctx = contextOn(root.path());

    cs::QdChanges c;
    c.displayName = "Zürich, \"express\" & <O'Brien>";
    c.locoName = "Class 66, 'Shed'";
    c.eraStart = 1965;
    c.eraEnd = 1990;
    c.consistType = "Consist Type Passenger Regional";
    c.drivable = "False";
    c.routes = std::vector<std::string>{"00000000-1111-2222-3333-444444444444", "abcdef01-0000-0000-0000-000000000000"};
    const cs::QdEditResult r = cs::editQuickDrive(*ctx, file, c);
    ASSERT_TRUE(r) << r.message;
    EXPECT_EQ(r.message, cs::kQdModified);
    ASSERT_FALSE(r.backup.empty());
    EXPECT_EQ(test::slurp(r.backup), before);

    cs::QdDocument d;
    ASSERT_TRUE(cs::parseQuickDrive(decode(file), d));
    // Names are read in the documents' code page.
    EXPECT_EQ(d.name, "Z\xFCrich, \"express\" & <O'Brien>");
    EXPECT_EQ(d.locoName, "Class 66, 'Shed'");
    EXPECT_EQ(d.eraStart, 1965);
    EXPECT_EQ(d.eraEnd, 1990);
    EXPECT_EQ(d.consistType, "eConsistTypePassengerRegional");
    EXPECT_FALSE(d.drivable);
    EXPECT_EQ(d.routes, *c.routes);
    EXPECT_EQ(d.entries.size(), 2u) << "the vehicles are untouched";

    // No routes at all is the empty element; and back to one.
    c = {};
    c.routes = std::vector<std::string>{};
    ASSERT_TRUE(cs::editQuickDrive(*ctx, file, c));
    ASSERT_TRUE(cs::parseQuickDrive(decode(file), d = {}));
    EXPECT_TRUE(d.routes.empty());
    c.routes = std::vector<std::string>{"00000000-1111-2222-3333-444444444444"};
    ASSERT_TRUE(cs::editQuickDrive(*ctx, file, c));
    ASSERT_TRUE(cs::parseQuickDrive(decode(file), d = {}));
    EXPECT_EQ(d.routes.size(), 1u);

    const auto entries = ctx->journal().entries();
    ASSERT_EQ(entries.size(), 3u);
    EXPECT_EQ(entries.front().command, cs::kQdEditCommand);
    for (auto it = entries.rbegin(); it != entries.rend(); ++it)
        ASSERT_TRUE(undoEntry(ctx->files(), it->id, false).ok);
    EXPECT_EQ(test::slurp(file), before);
}

TEST_F(QdCheckTest, RefusedValuesAndFragmentsWriteNothing) {
    test::TempDir root;
    const fs::path consist = copiedConsist(root);
    const fs::path fragment = root / "Assets/P/Q/PreLoad/Frag.bin";
    fs::copy_file(demoFragment(), fragment);
    auto ctx = contextOn(root.path());
    const std::string before = test::slurp(consist);

    for (const char* ok : {"True", "False", "eTrue", "eFalse"})
        EXPECT_TRUE(cs::drivableValue(ok)) << ok;
    for (const char* bad : {"true", "yes", "", "eTRUE"})
        EXPECT_FALSE(cs::drivableValue(bad)) << bad;
    EXPECT_EQ(cs::consistTypeValue("Consist Type Freight Coal"), "eConsistTypeFreightCoal");
    EXPECT_EQ(cs::consistTypeValue("eConsistTypeFreightCoal"), "eConsistTypeFreightCoal");

    cs::QdChanges c;
    c.drivable = "yes";
    cs::QdEditResult r = cs::editQuickDrive(*ctx, consist, c);
    EXPECT_FALSE(r);
    EXPECT_NE(r.message.find("eTrue or eFalse"), std::string::npos);
    c = {};
    c.routes = std::vector<std::string>{"</e><x>"};
    EXPECT_FALSE(cs::editQuickDrive(*ctx, consist, c));
    c = {};
    c.eraStart = 2000;
    c.eraEnd = 1900;
    EXPECT_FALSE(cs::editQuickDrive(*ctx, consist, c));
    c = {};
    c.displayName = "x";
    r = cs::editQuickDrive(*ctx, fragment, c);
    EXPECT_FALSE(r);
    EXPECT_NE(r.message.find("Frag.bin"), std::string::npos);
    EXPECT_EQ(test::slurp(consist), before);
    EXPECT_TRUE(ctx->journal().entries().empty());
}

TEST_F(QdCheckTest, AFailedWriteLeavesTheOldFileWhole) {
    test::TempDir root;
    const fs::path file = copiedConsist(root);
    const std::string before = test::slurp(file);
    auto ctx = contextOn(root.path());
    cs::QdChanges c;
    c.displayName = "Changed";
    for (WriteStep step : {WriteStep::Create, WriteStep::Write, WriteStep::Sync, WriteStep::Backup, WriteStep::Replace}) {
        test::FaultyFiles faulty(step, std::errc::no_space_on_device);
        ctx->files().setFileOps(&faulty);
        const cs::QdEditResult r = cs::editQuickDrive(*ctx, file, c);
        ctx->files().setFileOps(nullptr);
        EXPECT_FALSE(r) << writeStepName(step);
        EXPECT_NE(r.message.find("QD.bin"), std::string::npos) << r.message;
        EXPECT_EQ(test::slurp(file), before) << writeStepName(step);
        std::size_t files = 0;
        for ([[maybe_unused]] const auto& e : fs::directory_iterator(file.parent_path()))
            ++files;
        EXPECT_EQ(files, 1u) << writeStepName(step);
    }
}

} // namespace
