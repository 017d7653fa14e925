// The program on synthetic camera recordings: TLK frames reduce to the same
// scene as bare ones and list their header entries; Bayer recordings give
// their colour channels and a colour picture.
#include <cmath>
#include <cstdlib>
#include <fstream>
#include <sstream>
#include <string>
#include <vector>
#include <sys/wait.h>
#include <unistd.h>

#include <gtest/gtest.h>

namespace {

class CameraProgramTest : public ::testing::Test {
protected:
    static inline std::string dir;
    static constexpr unsigned W = 96, H = 40, N = 4;

    static void SetUpTestSuite()
    {
        char pattern[] = "/tmp/orvreduce-camera-test-XXXXXX";
        ASSERT_NE(mkdtemp(pattern), nullptr);
        dir = pattern;
    }
    static void TearDownTestSuite() { std::system(("rm -rf " + dir).c_str()); }

    // Exit code; standard output in out.
    static int Run(const std::string& args, std::string* out = nullptr)
    {
        const std::string cmd = "cd " + dir + " && " + ORVREDUCE_PROGRAM + " " + args + " >.out 2>.err";
        const int status = std::system(cmd.c_str());
        if (out) *out = Slurp(dir + "/.out");
        return WIFEXITED(status) ? WEXITSTATUS(status) : -1;
    }
    static std::string Slurp(const std::string& path)
    {
        std::ifstream f(path, std::ios::binary);
        std::stringstream s;
        s << f.rdbuf();
        return s.str();
    }
    static std::vector<std::string> Split(const std::string& line)
    {
        std::vector<std::string> cells;
        std::stringstream s(line);
        std::string cell;
        while (std::getline(s, cell, ',')) cells.push_back(cell);
        return cells;
    }
    // Rows of frame 0 of a CSV written by convert.
    static std::vector<std::vector<double>> Frame0(const std::string& name)
    {
        std::ifstream f(dir + "/" + name);
        std::string line;
        std::vector<std::vector<double>> rows;
        while (std::getline(f, line)) {
            if (line.empty() || line[0] == '#') continue;
            std::vector<double> row;
            for (const std::string& c : Split(line)) row.push_back(c.empty() ? NAN : std::stod(c));
            rows.push_back(row);
        }
        return rows;
    }
};

TEST_F(CameraProgramTest, TLKRecordingReducesAndListsItsHeader)
{
    const std::string size = " --size " + std::to_string(W) + "x" + std::to_string(H) + " --frames 4";
    ASSERT_EQ(Run("synth mx.qrt --pixel-type TLK-MX" + size), 0) << Slurp(dir + "/.err");
    // The header row is not image: the scene comes back as from bare frames.
    ASSERT_EQ(Run("convert mx.qrt --frames 0 -o t.csv -q"), 0) << Slurp(dir + "/.err");
    auto t = Frame0("t.csv");
    ASSERT_EQ(t.size(), H);
    EXPECT_NEAR(t[H / 2][W / 4], 120.0, 0.12);
    EXPECT_NEAR(t[0][0], 20.0, 0.12);
    EXPECT_NEAR(t[0][W - 1], 35.0, 0.12);

    std::string out;
    ASSERT_EQ(Run("frames mx.qrt --csv", &out), 0);
    std::stringstream lines(out);
    std::string line;
    std::getline(lines, line);
    const std::vector<std::string> header = Split(line);
    std::vector<std::vector<std::string>> rows;
    while (std::getline(lines, line)) rows.push_back(Split(line));
    ASSERT_EQ(rows.size(), N);
    auto column = [&](const std::string& name) {
        for (size_t i = 0; i < header.size(); ++i)
            if (header[i] == name) return i;
        ADD_FAILURE() << name;
        return size_t(0);
    };
    // IRIG locks from the third frame; the lens block changes form each frame
    // and the short forms leave fields empty.
    const char* source[N] = {"Camera", "Camera", "IRIG", "IRIG"};
    const char* analog[N] = {"21.50", "21.50", "", ""};
    const char* focal[N] = {"25.00", "25.10", "25.20", ""};
    for (unsigned f = 0; f < N; ++f) {
        ASSERT_EQ(rows[f].size() + (rows[f].size() < header.size() ? 1 : 0), header.size()) << f;
        rows[f].resize(header.size());
        EXPECT_EQ(rows[f][column("TimeSource")], source[f]) << f;
        EXPECT_EQ(rows[f][column("FrameCounter")], std::to_string(1000 + f));
        EXPECT_EQ(rows[f][column("LensAnalogTemp")], analog[f]) << f;
        EXPECT_EQ(rows[f][column("LensFocalLength")], focal[f]) << f;
        EXPECT_EQ(rows[f][column("LensFocusEncoderPos")], std::to_string(5400 + f)) << f;
        EXPECT_EQ(rows[f][column("FrameRate")], "30.00");
    }
    EXPECT_EQ(rows[0][column("RecordStart")], "T");
    EXPECT_EQ(rows[1][column("RecordStart")], "F");

    EXPECT_NE(Run("synth k.qrt --pixel-type Kordan"), 0);
    EXPECT_NE(Slurp(dir + "/.err").find("no synthetic recording of pixel type 'Kordan'"), std::string::npos);
    EXPECT_NE(Run("synth n.qrt --pixel-type TLK-MX --size 40x40"), 0); // no room for the header row
}

TEST_F(CameraProgramTest, BayerRecordingGivesChannelsAndAColourPicture)
{
    for (const char* type : {"BayerGB8", "BayerGRBG"}) {
        SCOPED_TRACE(type);
        const bool deep = std::string(type) == "BayerGRBG";
        const double top = deep ? 65535 : 255;
        ASSERT_EQ(Run(std::string("synth --force c.qrt --size 96x40 --frames 2 --pixel-type ") + type), 0);
        ASSERT_EQ(Run("convert c.qrt --frames 0 --unit \"Red Channel\" -o r.csv -q"), 0) << Slurp(dir + "/.err");
        ASSERT_EQ(Run("convert c.qrt --frames 0 --unit \"Green Channel\" -o g.csv -q"), 0);
        auto red = Frame0("r.csv"), green = Frame0("g.csv");
        ASSERT_EQ(red.size(), H);
        // Red rises along x, green along y, both linear: bilinear
        // interpolation keeps them to within the rounding of the samples.
        for (unsigned y = 1; y + 1 < H; y += 7)
            for (unsigned x = 1; x + 1 < W; x += 9) {
                EXPECT_NEAR(red[y][x], top * x / (W - 1), 1.0) << x << "," << y;
                EXPECT_NEAR(green[y][x], top * y / (H - 1), 1.0) << x << "," << y;
            }

        const std::string unit = deep ? "\"RGB (48-bit)\"" : "\"RGB (24-bit)\"";
        ASSERT_EQ(Run("convert c.qrt --unit " + unit + " -o c.png -q"), 0) << Slurp(dir + "/.err");
        const std::string png = Slurp(dir + "/c.png");
        ASSERT_GT(png.size(), 26u);
        auto be32 = [&](size_t at) {
            return uint32_t(uint8_t(png[at])) << 24 | uint32_t(uint8_t(png[at + 1])) << 16 |
                   uint32_t(uint8_t(png[at + 2])) << 8 | uint8_t(png[at + 3]);
        };
        EXPECT_EQ(be32(16), W);
        EXPECT_EQ(be32(20), H);
        EXPECT_EQ(png[24], deep ? 16 : 8); // bit depth
        EXPECT_EQ(png[25], 2);             // RGB
        // A colour unit has no values for a table.
        EXPECT_NE(Run("convert c.qrt --unit " + unit + " -o c.csv"), 0);
    }
}

} // namespace

TEST_F(CameraProgramTest, V410SarnetAndMX515RecordingsDecode)
{
    // Pixel type, and a text that frames prints for the second frame (index 1).
    const std::pair<const char*, const char*> cases[] = {
        {"guidV410F7M0", "FrameNumber              1"},
        {"\"V410 IR (FNM0)\"", "TimeSource               Camera"},
        {"guidV410GIGE", "DigitalIn1               1 Flag"},
        {"guidV410GIGEFlip", "Mark                     0 Flag"},
        {"guidMJLSIR", "TimeSource               Camera"},
        {"guidV410BGR8", "TimeSource               PC"},
        {"guidV410UYVY", "TimeSource               PC"},
        {"guidV410YUY2", "TimeSource               PC"},
        {"guidSarnetF7M0", "FrameNumber              1"},
        {"guidSarnetUYVY", "TimeSource               PC"},
        {"guidMX515F7M2", "TimeSource               Camera"},
        {"guidMX515F7M3", "TimeSource               PC"},
        {"guidMX515UYVY", "TimeSource               PC"},
    };
    std::string out;
    for (const auto& [type, expected] : cases) {
        SCOPED_TRACE(type);
        ASSERT_EQ(Run(std::string("synth --force cam.qrt --size 32x16 --frames 3 --pixel-type ") + type), 0)
            << Slurp(dir + "/.err");
        ASSERT_EQ(Run("frames cam.qrt --first 1 --count 1", &out), 0) << Slurp(dir + "/.err");
        EXPECT_NE(out.find(expected), std::string::npos) << out;
    }
    // JPEG screen frames are written, but no filter is handed out for them.
    EXPECT_EQ(Run("synth --force cam.qrt --size 32x16 --frames 2 --pixel-type guidMJPG"), 0) << Slurp(dir + "/.err");
    EXPECT_NE(Run("frames cam.qrt"), 0);
    EXPECT_NE(Slurp(dir + "/.err").find("no filter reads pixel type"), std::string::npos);
}

TEST_F(CameraProgramTest, V410RecordingsReduceToFactoryTemperature)
{
    // The factory calibration comes with every frame's camera block; the scene
    // comes back whatever the layout: byte order, prefix, flip, compression.
    const std::string size = " --size " + std::to_string(W) + "x" + std::to_string(H) + " --frames 2";
    for (const char* type : {"\"V410 IR (FNM0)\"", "guidV410GIGEFlip", "guidMJLSIR", "guidSarnetF7M0"}) {
        SCOPED_TRACE(type);
        ASSERT_EQ(Run(std::string("synth --force v.qrt --pixel-type ") + type + size), 0) << Slurp(dir + "/.err");
        ASSERT_EQ(Run("convert v.qrt --frames 0 --unit \"Temperature (Factory)\" -o v.csv -q"), 0)
            << Slurp(dir + "/.err");
        auto t = Frame0("v.csv");
        ASSERT_EQ(t.size(), H);
        ASSERT_EQ(t[0].size(), W);
        EXPECT_NEAR(t[H / 2][W / 4], 120.0, 0.05);
        EXPECT_NEAR(t[0][0], 20.0, 0.05);
        EXPECT_NEAR(t[H - 1][W - 1], 35.0, 0.05);
        EXPECT_NEAR(t[3][W / 2], 20.0 + 15.0 * (W / 2) / (W - 1), 0.05);
    }
    // Colour video to a picture.
    ASSERT_EQ(Run("synth y.qrt --pixel-type guidV410YUY2" + size), 0) << Slurp(dir + "/.err");
    ASSERT_EQ(Run("convert y.qrt --unit \"RGB (24-bit)\" -o y.png -q"), 0) << Slurp(dir + "/.err");
    const std::string png = Slurp(dir + "/y.png");
    ASSERT_GT(png.size(), 24u);
    EXPECT_EQ(uint8_t(png[19]), W);
    EXPECT_EQ(uint8_t(png[23]), H);
}
