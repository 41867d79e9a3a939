// velmora-serz as a program: the converter's switches, the file it writes, its exit code.

#include "testfiles.h"

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <sys/stat.h>
#include <unistd.h>

namespace fs = std::filesystem;
using namespace serztest;

namespace {

class SerzProgram : public ::testing::Test {
protected:
    void SetUp() override {
        m_dir = fs::temp_directory_path() / ("velmora-serzcli-" + std::to_string(::getpid()));
        fs::remove_all(m_dir);
        fs::create_directories(m_dir);
    }
    void TearDown() override { fs::remove_all(m_dir); }
    int run(const std::string& args) {
        const std::string cmd = std::string(VELMORA_SERZ) + " " + args + " > " + (m_dir / "out.txt").string();
        const int status = std::system(cmd.c_str());
        m_output = slurp(m_dir / "out.txt");
        return WEXITSTATUS(status);
    }
    std::string path(const std::string& name) const { return (m_dir / name).string(); }
    fs::path m_dir;
    std::string m_output;
};

} // namespace

TEST_F(SerzProgram, SwitchesAndTheConvertersWords) {
    SKIP_WITHOUT_TESTDATA();
    fs::copy_file(testdata("routeproperties.bin"), path("rp.bin"));
    ASSERT_EQ(run(path("rp.bin") + " /xml:" + path("rp.xml") + " --lf"), 0);
    EXPECT_NE(m_output.find("Converting "), std::string::npos);
    EXPECT_NE(m_output.find("Conversion complete"), std::string::npos);
    EXPECT_EQ(slurp(path("rp.xml")), slurp(testdata("routeproperties.serz.xml")));
    ASSERT_EQ(run(path("rp.xml") + " bin:" + path("back.bin")), 0);
    EXPECT_EQ(slurp(path("back.bin")), slurp(testdata("routeproperties.bin")));
    // No switch: beside the input, the other kind by the extension.
    fs::copy_file(testdata("bogie_audio_control.proxybin"), path("a.proxybin"));
    ASSERT_EQ(run(path("a.proxybin")), 0);
    EXPECT_TRUE(fs::exists(path("a.proxyxml")));
}

TEST_F(SerzProgram, FailureLeavesNoOutputAndSaysWhy) {
    std::ofstream(path("bad.bin")) << "not a document";
    std::ofstream(path("old.xml")) << "an old output";
    EXPECT_EQ(run(path("bad.bin") + " /xml:" + path("old.xml")), 1);
    EXPECT_FALSE(fs::exists(path("old.xml"))) << "an old output must not pass for a new one";
    EXPECT_NE(m_output.find("header"), std::string::npos);
    EXPECT_EQ(run(path("missing.bin") + " /xml:" + path("x.xml")), 1);
    EXPECT_NE(m_output.find("cannot be read"), std::string::npos);
    EXPECT_EQ(run(path("bad.bin") + " /pdf:" + path("x.pdf")), 2);
}

TEST_F(SerzProgram, WithoutASwitchTheOutputGoesBesideByTheExtension) {
    SKIP_WITHOUT_TESTDATA();
    fs::copy_file(testdata("Bogie01.bin"), path("Shape.GeoPcDx"));
    ASSERT_EQ(run(path("Shape.GeoPcDx") + " --lf"), 0);
    ASSERT_TRUE(fs::exists(path("Shape.xml"))) << "other binary kinds become .xml";
    ASSERT_EQ(run(path("Shape.xml")), 0);
    EXPECT_EQ(slurp(path("Shape.bin")), slurp(testdata("Bogie01.bin"))) << "and come back as .bin";
    fs::copy_file(testdata("bogie_audio_control.proxybin"), path("b.proxybin"));
    ASSERT_EQ(run(path("b.proxybin") + " --exp2"), 0);
    fs::rename(path("b.proxybin"), path("original.proxybin"));
    ASSERT_EQ(run(path("b.proxyxml")), 0);
    EXPECT_EQ(slurp(path("b.proxybin")), slurp(path("original.proxybin")));
    EXPECT_EQ(run(""), 2) << "no input is a usage error";
}

TEST_F(SerzProgram, LineEndsExponentsAndTheConvertersOwnFloatImport) {
    SKIP_WITHOUT_TESTDATA();
    fs::copy_file(testdata("routeproperties.bin"), path("rp.bin"));
    ASSERT_EQ(run(path("rp.bin") + " /xml:" + path("crlf.xml")), 0);
    ASSERT_EQ(run(path("rp.bin") + " /xml:" + path("lf.xml") + " --lf"), 0);
    ASSERT_EQ(run(path("rp.bin") + " /xml:" + path("both.xml") + " --lf --crlf"), 0);
    const std::string crlf = slurp(path("crlf.xml")), lf = slurp(path("lf.xml"));
    EXPECT_NE(crlf.find("\r\n"), std::string::npos) << "CR LF is the converter's default";
    EXPECT_EQ(lf.find('\r'), std::string::npos);
    EXPECT_EQ(slurp(path("both.xml")), crlf) << "the last switch wins";

    // A float whose text was edited takes the new text, in the lossless import and in the
    // converter's own.
    std::string edited = lf;
    const std::string::size_type alt = edited.find("d:alt_encoding=");
    ASSERT_NE(alt, std::string::npos);
    const std::string::size_type gt = edited.find('>', alt), lt = edited.find('<', gt);
    edited.replace(gt + 1, lt - gt - 1, "12.5");
    std::ofstream(path("edited.xml"), std::ios::binary) << edited;
    ASSERT_EQ(run(path("edited.xml") + " /bin:" + path("lossless.bin")), 0);
    ASSERT_EQ(run(path("edited.xml") + " /bin:" + path("compatible.bin") + " --compatible"), 0);
    EXPECT_NE(slurp(path("lossless.bin")), slurp(testdata("routeproperties.bin")));
    ASSERT_EQ(run(path("lossless.bin") + " /xml:" + path("again.xml") + " --lf"), 0);
    EXPECT_NE(slurp(path("again.xml")).find(">12.5<"), std::string::npos);
    ASSERT_EQ(run(path("compatible.bin") + " /xml:" + path("again2.xml") + " --lf"), 0);
    EXPECT_NE(slurp(path("again2.xml")).find(">12.5<"), std::string::npos);
    EXPECT_EQ(run(path("rp.bin") + " /xml:" + path("x.xml") + " --exp4"), 2) << "unknown switches are refused";
    EXPECT_FALSE(fs::exists(path("x.xml")));
}

TEST_F(SerzProgram, TheInputDecidesTheDirectionAndTheSwitchNamesTheOutput) {
    SKIP_WITHOUT_TESTDATA();
    // As the simulator's converter takes it: XML in, a binary document out, whatever the switch
    // says.
    fs::copy_file(testdata("routeproperties.serz.xml"), path("s1.xml"));
    ASSERT_EQ(run(path("s1.xml") + " xml:" + path("s4.bin")), 0) << m_output;
    EXPECT_EQ(slurp(path("s4.bin")), slurp(testdata("routeproperties.bin")));
    ASSERT_EQ(run(path("s4.bin") + " /bin:" + path("s5.xml") + " --lf"), 0) << m_output;
    EXPECT_EQ(slurp(path("s5.xml")), slurp(testdata("routeproperties.serz.xml")));
    // A binary document under an XML name goes to XML beside it.
    fs::copy_file(testdata("Bogie01.bin"), path("odd.proxyxml"));
    fs::copy_file(testdata("Bogie01.bin"), path("odd.bin"));
    ASSERT_EQ(run(path("odd.proxyxml")), 0) << m_output;
    EXPECT_TRUE(fs::exists(path("odd.proxybin")) == false);
    ASSERT_EQ(run(path("odd.bin") + " /xml:" + path("odd-plain.xml")), 0);
    EXPECT_EQ(slurp(path("odd.xml")), slurp(path("odd-plain.xml")));

    // Never the input as its own output; never a wait on a FIFO.
    const std::string before = slurp(path("s4.bin"));
    EXPECT_EQ(run(path("s4.bin") + " xml:" + path("s4.bin")), 1);
    EXPECT_EQ(slurp(path("s4.bin")), before);
    ASSERT_EQ(::mkfifo(path("pipe.bin").c_str(), 0600), 0);
    EXPECT_EQ(run(path("pipe.bin") + " /xml:" + path("pipe.xml")), 1);
    EXPECT_NE(m_output.find("is not a regular file"), std::string::npos) << m_output;
}
