// Runs the orvreduce program on synthetic recordings and checks what it
// writes: values against the scene's known temperatures, messages and exit
// codes on damaged input, and that a failure leaves no output file behind.
#include <cmath>
#include <cstdio>
#include <algorithm>
#include <cstdlib>
#include <cstring>
#include <fstream>
#include <sstream>
#include <string>
#include <utility>
#include <vector>
#include <dirent.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <gtest/gtest.h>
#include <nlohmann/json.hpp>
#include <tiffio.h>

namespace {

struct SRun {
    int exitCode = -1;
    bool signaled = false;
    std::string out;
    std::string err;
};

std::string Slurp(const std::string& path)
{
    std::ifstream f(path, std::ios::binary);
    std::stringstream s;
    s << f.rdbuf();
    return s.str();
}

class ProgramTest : public ::testing::Test {
protected:
    static std::string dir;
    static constexpr unsigned W = 96, H = 64, N = 5;

    static void SetUpTestSuite()
    {
        char pattern[] = "/tmp/orvreduce-cli-test-XXXXXX";
        ASSERT_NE(mkdtemp(pattern), nullptr);
        dir = pattern;
        SRun r = Run("synth " + dir + "/scene.qrt --size 96x64 --frames 5");
        ASSERT_EQ(r.exitCode, 0) << r.err;
    }
    static void TearDownTestSuite() { std::system(("rm -rf " + dir).c_str()); }

    static SRun Run(const std::string& args)
    {
        SRun r;
        std::string out = dir + "/.stdout", err = dir + "/.stderr";
        // From the test folder, so that file names may be given bare.
        std::string cmd = "cd " + dir + " && " + ORVREDUCE_PROGRAM + " " + args + " >" + out + " 2>" + err;
        int status = std::system(cmd.c_str());
        // The shell reports a signal as 128 + its number.
        r.exitCode = WIFEXITED(status) ? WEXITSTATUS(status) : -1;
        r.signaled = !WIFEXITED(status) || r.exitCode > 128;
        r.out = Slurp(out);
        r.err = Slurp(err);
        return r;
    }
    static std::string Path(const std::string& name) { return dir + "/" + name; }
    static bool Exists(const std::string& path)
    {
        struct stat st;
        return ::stat(path.c_str(), &st) == 0;
    }
    // Names in the folder that start with prefix: leftovers of a failed write.
    static std::vector<std::string> Leftovers(const std::string& prefix)
    {
        std::vector<std::string> names;
        if (DIR* d = ::opendir(dir.c_str())) {
            while (dirent* e = ::readdir(d)) {
                std::string n = e->d_name;
                if (n.rfind(prefix, 0) == 0 || n.rfind(".tmp-", 0) == 0) names.push_back(n);
            }
            ::closedir(d);
        }
        return names;
    }
    // Rows of one frame of a CSV written by convert.
    static std::vector<std::vector<double>> ReadCsvFrame(const std::string& path, unsigned frameIndex)
    {
        std::ifstream f(path);
        std::string line;
        std::vector<std::vector<double>> rows;
        bool in = false;
        while (std::getline(f, line)) {
            if (line.rfind("# frame ", 0) == 0) {
                in = std::stoul(line.substr(8)) == frameIndex;
                continue;
            }
            if (!in || line.empty() || line[0] == '#') continue;
            std::vector<double> row;
            std::stringstream s(line);
            std::string cell;
            while (std::getline(s, cell, ',')) row.push_back(cell.empty() ? NAN : std::stod(cell));
            rows.push_back(row);
        }
        return rows;
    }
    // The scene written by synth, evaluated here without its noise.
    static double Background(unsigned x) { return 20.0 + 15.0 * x / (W - 1); }
    static double DiscX(unsigned f) { return W / 4.0 + f * (W / 2.0) / (N - 1); }
};
std::string ProgramTest::dir;

TEST_F(ProgramTest, ConvertGivesBackTheSceneTemperatures)
{
    // Noise is +-0.1 K and a count is about 0.01 K: 0.12 K covers both.
    const double tol = 0.12;
    for (const char* args : {"--unit temperature -o t.csv", "--frames 0 --scale K -o k.csv",
                             "--frames 0 --emissivity 1 -o e.csv", "--frames 0 --unit Counts -o c.csv"}) {
        SRun r = Run(std::string("convert scene.qrt ") + args);
        ASSERT_EQ(r.exitCode, 0) << args << ": " << r.err;
    }
    for (unsigned f : {0u, N - 1}) {
        auto rows = ReadCsvFrame(Path("t.csv"), f);
        ASSERT_EQ(rows.size(), H);
        ASSERT_EQ(rows[0].size(), W);
        unsigned cx = static_cast<unsigned>(DiscX(f)), cy = H / 2;
        EXPECT_NEAR(rows[cy][cx], 120.0, tol) << "disc centre, frame " << f;
        // Corners and the top row lie outside the disc.
        for (unsigned x : {0u, W / 2, W - 1}) {
            EXPECT_NEAR(rows[0][x], Background(x), tol) << "x " << x << " frame " << f;
            EXPECT_NEAR(rows[H - 1][x], Background(x), tol) << "x " << x << " frame " << f;
        }
    }

    // Kelvin is Celsius + 273.15; the scale changes nothing else.
    auto c = ReadCsvFrame(Path("t.csv"), 0), k = ReadCsvFrame(Path("k.csv"), 0);
    EXPECT_NEAR(k[5][7] - c[5][7], 273.15, 0.01);

    // Emissivity 1 instead of the recorded 0.95: the body's radiance is read as
    // coming from a black body, T' = 0.95^(1/4) * T in kelvin.
    auto e = ReadCsvFrame(Path("e.csv"), 0);
    unsigned cx = static_cast<unsigned>(DiscX(0));
    EXPECT_NEAR(e[H / 2][cx], std::pow(0.95, 0.25) * 393.15 - 273.15, 0.15);

    // Counts are the raw pixels.
    auto counts = ReadCsvFrame(Path("c.csv"), 0);
    EXPECT_EQ(counts[0][0], std::floor(counts[0][0]));
    EXPECT_GT(counts[H / 2][cx], counts[0][0]);
}

TEST_F(ProgramTest, RadianceFollowsTheCalibrationPolynomial)
{
    // The calibration synth writes: radiance = -2 + 0.005 c + 2e-8 c^2 of
    // the counts c, with no path loss.
    for (const char* args : {"--unit counts -o rc.csv", "--unit \"Radiance (User)\" -o rr.csv", "-o p.png"}) {
        SRun r = Run(std::string("convert scene.qrt --frames 2 ") + args);
        ASSERT_EQ(r.exitCode, 0) << args << ": " << r.err;
    }
    auto counts = ReadCsvFrame(Path("rc.csv"), 2), radiance = ReadCsvFrame(Path("rr.csv"), 2);
    ASSERT_EQ(counts.size(), H);
    ASSERT_EQ(radiance.size(), H);
    for (unsigned y : {0u, H / 2, H - 1})
        for (unsigned x : {0u, static_cast<unsigned>(DiscX(2)), W - 1}) {
            double c = counts[y][x];
            EXPECT_NEAR(radiance[y][x], -2 + 0.005 * c + 2e-8 * c * c, 1e-4 * std::fabs(radiance[y][x]))
                << x << "," << y;
        }

    // The preview is a PNG wider than the frame (the colour bar) and as high.
    std::string png = Slurp(Path("p.png"));
    ASSERT_GT(png.size(), 24u);
    EXPECT_EQ(png.substr(1, 3), "PNG");
    auto be32 = [&](size_t at) {
        return uint32_t(uint8_t(png[at])) << 24 | uint32_t(uint8_t(png[at + 1])) << 16 |
               uint32_t(uint8_t(png[at + 2])) << 8 | uint8_t(png[at + 3]);
    };
    EXPECT_GT(be32(16), W);
    EXPECT_EQ(be32(20), H);
}

TEST_F(ProgramTest, TiffAndNpyHoldEveryFrameAsFloat)
{
    SRun r = Run("convert " + Path("scene.qrt") + " --frames 1:4 -o " + Path("t.tiff"));
    ASSERT_EQ(r.exitCode, 0) << r.err;
    ASSERT_TRUE(Exists(Path("t.status.tiff")));
    TIFF* tiff = TIFFOpen(Path("t.tiff").c_str(), "r");
    ASSERT_NE(tiff, nullptr);
    EXPECT_EQ(TIFFNumberOfDirectories(tiff), 3);
    uint32_t w = 0, h = 0;
    uint16_t bits = 0, format = 0;
    ASSERT_TRUE(TIFFSetDirectory(tiff, 2)); // frame 3
    TIFFGetField(tiff, TIFFTAG_IMAGEWIDTH, &w);
    TIFFGetField(tiff, TIFFTAG_IMAGELENGTH, &h);
    TIFFGetField(tiff, TIFFTAG_BITSPERSAMPLE, &bits);
    TIFFGetField(tiff, TIFFTAG_SAMPLEFORMAT, &format);
    EXPECT_EQ(w, W);
    EXPECT_EQ(h, H);
    EXPECT_EQ(bits, 32);
    EXPECT_EQ(format, SAMPLEFORMAT_IEEEFP);
    std::vector<float> row(W);
    ASSERT_EQ(TIFFReadScanline(tiff, row.data(), H / 2, 0), 1);
    EXPECT_NEAR(row[static_cast<unsigned>(DiscX(3))], 120.0, 0.12);
    EXPECT_NEAR(row[0], Background(0), 0.12);
    TIFFClose(tiff);

    r = Run("convert " + Path("scene.qrt") + " --frames 3 -o " + Path("t.npy"));
    ASSERT_EQ(r.exitCode, 0) << r.err;
    std::string npy = Slurp(Path("t.npy"));
    ASSERT_GT(npy.size(), 10u);
    EXPECT_EQ(npy.substr(0, 6), "\x93NUMPY");
    size_t headerLength = static_cast<unsigned char>(npy[8]) | static_cast<unsigned char>(npy[9]) << 8;
    EXPECT_EQ((10 + headerLength) % 64, 0u);
    EXPECT_NE(npy.find("'shape': (1, 64, 96)"), std::string::npos);
    ASSERT_EQ(npy.size(), 10 + headerLength + size_t(W) * H * 4);
    float v;
    std::memcpy(&v, npy.data() + 10 + headerLength + (size_t(H / 2) * W + static_cast<unsigned>(DiscX(3))) * 4, 4);
    EXPECT_NEAR(v, 120.0, 0.12);
}

TEST_F(ProgramTest, InfoFramesAndStatsReportTheRecording)
{
    SRun r = Run("info " + Path("scene.qrt") + " --json");
    ASSERT_EQ(r.exitCode, 0) << r.err;
    auto j = nlohmann::json::parse(r.out);
    EXPECT_EQ(j["frames"], N);
    EXPECT_EQ(j["sourceInfo"]["pixelType"], "Grayscale");
    EXPECT_EQ(j["sourceInfo"]["baseUnit"], "Counts");
    EXPECT_EQ(j["sourceInfo"]["presets"][0]["frames"], N);
    std::vector<std::string> names;
    for (auto& b : j["blocks"]) names.push_back(b["name"]);
    EXPECT_EQ(names, (std::vector<std::string>{"SourceInfo", "ObjectParameters", "RCal", "Pixels"}));
    EXPECT_EQ(j["units"], (nlohmann::json{"Counts", "Radiance (User)", "Temperature (User)"}));

    // Frame numbers follow positions in the file even when starting later.
    r = Run("frames " + Path("scene.qrt") + " --first 2 --csv");
    ASSERT_EQ(r.exitCode, 0) << r.err;
    std::stringstream lines(r.out);
    std::string header, line;
    std::getline(lines, header);
    EXPECT_NE(header.find("FrameNumber"), std::string::npos);
    int count = 0;
    while (std::getline(lines, line)) {
        EXPECT_EQ(line.substr(0, 2), std::to_string(2 + count) + ",");
        ++count;
    }
    EXPECT_EQ(count, int(N) - 2);

    // A background rectangle away from the disc: the mean of the gradient
    // over its columns, and the extremes at its left and right edges.
    r = Run("stats " + Path("scene.qrt") + " --rect 0,0,20,10 --csv --frames 0:2");
    ASSERT_EQ(r.exitCode, 0) << r.err;
    std::stringstream s(r.out);
    std::getline(s, header);
    EXPECT_EQ(header, "frame,mean,std,min,min_x,min_y,max,max_x,max_y,valid");
    for (int f = 0; f < 2; ++f) {
        ASSERT_TRUE(std::getline(s, line));
        std::vector<double> v;
        std::stringstream cells(line);
        std::string cell;
        while (std::getline(cells, cell, ',')) v.push_back(std::stod(cell));
        ASSERT_EQ(v.size(), 10u);
        EXPECT_EQ(v[0], f);
        EXPECT_NEAR(v[1], (Background(0) + Background(19)) / 2, 0.02);
        EXPECT_NEAR(v[3], Background(0), 0.12);
        EXPECT_LE(v[4], 1);   // the minimum sits in the coldest columns
        EXPECT_GE(v[7], 18);  // the maximum in the warmest
        EXPECT_EQ(v[9], 200);
    }
}

TEST_F(ProgramTest, VerifyNamesTheBlockWithAFlippedByte)
{
    SRun r = Run("verify " + Path("scene.qrt"));
    EXPECT_EQ(r.exitCode, 0) << r.err;

    // One byte in the middle of the "RCal" payload, found through info.
    r = Run("info --json " + Path("scene.qrt"));
    auto j = nlohmann::json::parse(r.out);
    uint64_t offset = 0, size = 0;
    for (auto& b : j["blocks"])
        if (b["name"] == "RCal") {
            offset = b["offset"].get<uint64_t>() + 77;
            size = std::stoull(b["size"].get<std::string>());
        }
    ASSERT_GT(size, 0u);
    std::string bytes = Slurp(Path("scene.qrt"));
    bytes[offset + size / 2] ^= 0x01;
    std::ofstream(Path("flipped.qrt"), std::ios::binary) << bytes;
    r = Run("verify " + Path("flipped.qrt"));
    EXPECT_NE(r.exitCode, 0);
    EXPECT_FALSE(r.signaled);
    EXPECT_NE(r.err.find("\"RCal\""), std::string::npos) << r.err;
    EXPECT_EQ(r.err.find("\"SourceInfo\""), std::string::npos) << r.err;
}

TEST_F(ProgramTest, BadInputGivesOneLineAndNoOutput)
{
    std::string bytes = Slurp(Path("scene.qrt"));
    std::ofstream(Path("cut.qrt"), std::ios::binary) << bytes.substr(0, 1000);
    std::ofstream(Path("text.qrt"), std::ios::binary) << "this is not a recording\n";
    // A recording cut in the frames: readable up to the last whole frame.
    std::ofstream(Path("cutframe.qrt"), std::ios::binary) << bytes.substr(0, bytes.size() - W * H);

    // Cut inside the first frame: nothing to reduce, and one line saying so;
    // only info has something to tell.
    std::ofstream(Path("noframe.qrt"), std::ios::binary) << bytes.substr(0, bytes.size() - N * W * H * 2 + 141);

    const std::pair<std::string, std::string> inputs[] = {
        {"cut.qrt", ".tiff"}, {"text.qrt", ".tiff"}, {"missing.qrt", ".tiff"}, {"noframe.qrt", ".npy"}};
    for (const auto& [input, ext] : inputs) {
        for (std::string cmd : {"info", "verify", "frames", "stats", "convert"}) {
            if (input == "noframe.qrt" && cmd == "info") continue;
            std::string out = "out-" + input + "-" + cmd + ext;
            std::string args = cmd + " " + Path(input) + (cmd == "convert" ? " -o " + Path(out) : "");
            SRun r = Run(args);
            EXPECT_NE(r.exitCode, 0) << args;
            EXPECT_FALSE(r.signaled) << args;
            EXPECT_EQ(std::count(r.err.begin(), r.err.end(), '\n'), 1) << args << ": " << r.err;
            EXPECT_NE(r.err.find(input), std::string::npos) << args << ": " << r.err;
            EXPECT_TRUE(Leftovers("out-").empty()) << args;
        }
    }

    SRun r = Run("verify " + Path("cutframe.qrt"));
    EXPECT_NE(r.exitCode, 0);
    EXPECT_NE(r.err.find("cut short"), std::string::npos) << r.err;
    r = Run("convert " + Path("cutframe.qrt") + " --frames 0:4 -q -o " + Path("cutframe.npy"));
    EXPECT_EQ(r.exitCode, 0) << r.err;

    // Arguments the recording cannot satisfy fail before anything is written.
    for (std::string args : {"--frames 3:99", "--unit Error", "--emissivity 0", "--scale Q"}) {
        r = Run("convert " + Path("scene.qrt") + " " + args + " -o " + Path("out-bad.tiff"));
        EXPECT_NE(r.exitCode, 0) << args;
        EXPECT_TRUE(Leftovers("out-").empty()) << args;
    }
}

} // namespace

TEST_F(ProgramTest, FamilyRecordingsGiveBackTheSceneInFactoryTemperature)
{
    // Noise is +-0.1 K and a count is below 0.01 K in both families.
    const double tol = 0.12;
    const std::string unit = " --unit \"Temperature (Factory)\"";
    for (std::string family : {"ombria", "corvane"}) {
        SCOPED_TRACE(family);
        const std::string rec = family + ".qrt";
        SRun r = Run("synth " + rec + " --size 96x64 --frames 5 --family " + family);
        ASSERT_EQ(r.exitCode, 0) << r.err;

        r = Run("info --json " + rec);
        ASSERT_EQ(r.exitCode, 0) << r.err;
        auto j = nlohmann::json::parse(r.out);
        EXPECT_EQ(j["frames"], N);
        bool factory = false;
        for (auto& u : j["units"]) factory = factory || u == "Temperature (Factory)";
        EXPECT_TRUE(factory) << j["units"];

        r = Run("convert " + rec + unit + " -o " + family + ".csv");
        ASSERT_EQ(r.exitCode, 0) << r.err;
        for (unsigned f : {0u, N - 1}) {
            auto rows = ReadCsvFrame(Path(family + ".csv"), f);
            ASSERT_EQ(rows.size(), H);
            ASSERT_EQ(rows[0].size(), W);
            EXPECT_NEAR(rows[H / 2][static_cast<unsigned>(DiscX(f))], 120.0, tol) << "disc, frame " << f;
            for (unsigned x : {0u, W / 2, W - 1}) {
                EXPECT_NEAR(rows[0][x], Background(x), tol) << "x " << x << " frame " << f;
                EXPECT_NEAR(rows[H - 1][x], Background(x), tol) << "x " << x << " frame " << f;
            }
        }

        r = Run("stats " + rec + unit + " --rect 0,0,20,10 --csv --frames 0:1");
        ASSERT_EQ(r.exitCode, 0) << r.err;
        std::stringstream s(r.out);
        std::string header, line;
        std::getline(s, header);
        ASSERT_TRUE(std::getline(s, line));
        EXPECT_NEAR(std::stod(line.substr(line.find(',') + 1)), (Background(0) + Background(19)) / 2, 0.02);

        // A black body instead of emissivity 0.95 reads colder, and further
        // away the air takes its share (Ombria only: Corvane has no path).
        r = Run("convert " + rec + unit + " --frames 0 --emissivity 1 -o " + family + "-e.csv");
        ASSERT_EQ(r.exitCode, 0) << r.err;
        auto black = ReadCsvFrame(Path(family + "-e.csv"), 0);
        const unsigned cx = static_cast<unsigned>(DiscX(0));
        EXPECT_LT(black[H / 2][cx], 120.0 - 1.0);
        if (family == "ombria") {
            r = Run("convert " + rec + unit + " --frames 0 --distance 200 -o far.csv");
            ASSERT_EQ(r.exitCode, 0) << r.err;
            EXPECT_GT(ReadCsvFrame(Path("far.csv"), 0)[H / 2][cx], 120.0 + 0.5);
        }
    }
}
