// The saved consists of the demo install as the program reads them agree with what the generator
// recorded in its manifest: names, vehicles in order, orientation, and the missing wagon found.

#include "../common/demofixture.h"

#include "velmora/consists/consisttemplates.h"

#include <QByteArray>
#include <QFile>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>

#include <gtest/gtest.h>

using namespace velmora;
using namespace velmora::consists;

namespace {

struct DemoConsists : test::DemoInstallTest<DemoConsists> {
    static constexpr const char* kName = "demo-consists";
    QJsonObject manifest() {
        QFile f(QString::fromStdString((s_dir / "rw" / "manifest.json").string()));
        EXPECT_TRUE(f.open(QIODevice::ReadOnly));
        return QJsonDocument::fromJson(f.readAll()).object();
    }
};

std::string str(const QJsonValue& v) { return v.toString().toStdString(); }

TEST_F(DemoConsists, TheProgramReadsWhatTheManifestRecords) {
    const ReadResult read = readConsistTemplates(*m_ctx);
    ASSERT_TRUE(read.ok()) << read.error;
    ASSERT_TRUE(read.exists);
    const QJsonArray recorded = manifest()["savedConsists"].toArray();
    ASSERT_EQ(read.doc.consists.size(), static_cast<std::size_t>(recorded.size()));
    int missing = 0;
    for (qsizetype i = 0; i < recorded.size(); ++i) {
        const ConsistTemplate& c = read.doc.consists[static_cast<std::size_t>(i)];
        const QJsonObject m = recorded[i].toObject();
        SCOPED_TRACE(str(m["name"]));
        EXPECT_EQ(shownName(c.name), str(m["name"]));
        const QJsonArray vehicles = m["vehicles"].toArray();
        ASSERT_EQ(c.entries.size(), static_cast<std::size_t>(vehicles.size()));
        for (qsizetype k = 0; k < vehicles.size(); ++k) {
            const TemplateEntry& e = c.entries[static_cast<std::size_t>(k)];
            const QJsonObject v = vehicles[k].toObject();
            EXPECT_EQ(e.provider, str(v["provider"]));
            EXPECT_EQ(e.product, str(v["product"]));
            EXPECT_EQ(e.blueprintId, str(v["blueprint"]));
            EXPECT_EQ(e.flipped == "1", v["flipped"].toBool());
            EXPECT_EQ(blueprintMissing(*m_ctx, e), v["missing"].toBool()) << e.blueprintId;
            missing += v["missing"].toBool();
        }
    }
    EXPECT_EQ(missing, 1); // the sludge wagon
}

} // namespace
