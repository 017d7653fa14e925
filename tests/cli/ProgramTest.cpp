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
#include <zlib.h>

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

    // prefix goes before the program in the shell command: a limit, or
    // variables of its environment.
    static SRun Run(const std::string& args, const std::string& prefix = "")
    {
        SRun r;
        std::string out = dir + "/.stdout", err = dir + "/.stderr";
        // From the test folder, so that file names may be given bare.
        std::string cmd = "cd " + dir + " && " + prefix + ORVREDUCE_PROGRAM + " " + args + " >" + out + " 2>" + err;
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

// Frames reduced on several threads are written in frame order: the files
// are those of one thread, byte for byte, over several blocks of frames.
TEST_F(ProgramTest, ThreadsWriteTheFilesOfOneThread)
{
    SRun r = Run("synth " + Path("long.qrt") + " --size 160x128 --frames 100");
    ASSERT_EQ(r.exitCode, 0) << r.err;
    for (const char* ext : {"npy", "tiff", "csv"}) {
        std::string files[2];
        for (int k = 0; k < 2; ++k) {
            const std::string out = Path(std::string("threads") + char('0' + k) + "." + ext);
            r = Run("convert " + Path("long.qrt") + " --frames 2: --threads " + (k ? "3" : "1") + " -q -o " + out);
            ASSERT_EQ(r.exitCode, 0) << r.err;
            files[k] = Slurp(out);
            if (std::string(ext) == "tiff") files[k] += Slurp(Path(std::string("threads") + char('0' + k) + ".status.tiff"));
            std::remove(out.c_str());
        }
        EXPECT_GT(files[0].size(), 98u * 160 * 128 * 4) << ext;
        EXPECT_TRUE(files[0] == files[1]) << ext << " files differ";
    }
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

TEST_F(ProgramTest, RoiListsAndExportsRegionFiles)
{
    std::ofstream(Path("regions.xml"))
        << "<roiList version=\"1.6\" imageWidth=\"96\" imageHeight=\"64\"><rois>"
           "<roi name=\"Box\" type=\"Rect\"><points><point x=\"2\" y=\"3\"/><point x=\"12\" y=\"3\"/>"
           "<point x=\"12\" y=\"8\"/><point x=\"2\" y=\"8\"/></points></roi>"
           "<roi name=\"Weld &amp; seam\" type=\"Line\"><points><point x=\"0\" y=\"0\"/><point x=\"9\" y=\"4\"/></points></roi>"
           "</rois></roiList>";
    SRun r = Run("roi regions.xml --size 96x64 --svg regions.svg --bmp regions.bmp");
    ASSERT_EQ(r.exitCode, 0) << r.err;
    EXPECT_NE(r.out.find("Rect"), std::string::npos) << r.out;
    EXPECT_NE(r.out.find("2,3-12,8"), std::string::npos) << r.out; // bounds of the box
    EXPECT_NE(r.out.find("      50  "), std::string::npos) << r.out; // its 10 x 5 pixels
    for (const char* name : {"regions-1.svg", "regions-2.svg"}) {
        // Any XML parser will do; Python's is on every machine that builds this.
        std::string cmd = "/usr/bin/python3 -c 'import sys, xml.dom.minidom as m; m.parse(sys.argv[1])' " + Path(name);
        EXPECT_EQ(std::system(cmd.c_str()), 0) << name;
    }
    EXPECT_EQ(Slurp(Path("regions-1.bmp")).substr(0, 2), "BM");

    // Damaged region files: one line naming the file, a non-zero exit.
    std::string binary = "SROI\x01\x05";
    binary += std::string(12, '\0') + std::string("\x01\x01\x00\x00", 4); // 257 regions
    std::ofstream(Path("count.roi"), std::ios::binary) << binary;
    std::ofstream(Path("cut.roi"), std::ios::binary) << std::string("SROI\x01\x05\x60\x00", 8);
    std::ofstream(Path("broken.xml")) << "<roiList version=\"1.6\"><rois><roi";
    std::ofstream(Path("future.xml")) << "<roiList version=\"2.0\"/>";
    for (const char* name : {"count.roi", "cut.roi", "broken.xml", "future.xml", "absent.xml"}) {
        r = Run(std::string("roi ") + name + " --size 96x64");
        EXPECT_EQ(r.exitCode, 1) << name;
        EXPECT_EQ(std::count(r.err.begin(), r.err.end(), '\n'), 1) << r.err;
        EXPECT_EQ(r.err.rfind(std::string("orvreduce: ") + name + ": ", 0), 0u) << r.err;
    }
}

TEST_F(ProgramTest, StatsPerRegionGiveTheSceneTemperatures)
{
    // One small circle (radius 3.2) on the disc's centre of each frame, a cursor on frame 0's centre in
    // its own emissivities, a background box in the top rows, a line across.
    std::ofstream f(Path("scene-regions.xml"));
    f << "<roiList version=\"1.6\"><rois>";
    for (unsigned k = 0; k < N; ++k) {
        double cx = DiscX(k) + 0.5, cy = H / 2.0 + 0.5;
        f << "<roi name=\"disc " << k << "\" type=\"Ellipse\"><points><point x=\"" << cx - 3.2 << "\" y=\"" << cy - 3.2
          << "\"/><point x=\"" << cx + 3.2 << "\" y=\"" << cy - 3.2 << "\"/><point x=\"" << cx + 3.2 << "\" y=\""
          << cy + 3.2 << "\"/><point x=\"" << cx - 3.2 << "\" y=\"" << cy + 3.2 << "\"/></points></roi>";
    }
    for (const char* e : {"0.95", "0.5"})
        f << "<roi name=\"disc e" << e << "\" type=\"Cursor\"><objectParameters useEmissivity=\"T\" emissivity=\"" << e
          << "\"/><points><point x=\"" << DiscX(0) << "\" y=\"" << H / 2 << "\"/></points></roi>";
    f << "<roi name=\"top, left\" type=\"Rect\"><points><point x=\"0\" y=\"0\"/><point x=\"20\" y=\"0\"/>"
         "<point x=\"20\" y=\"10\"/><point x=\"0\" y=\"10\"/></points></roi>"
         "<roi name=\"row\" type=\"Line\"><points><point x=\"0\" y=\"5\"/><point x=\"95\" y=\"5\"/></points></roi>"
         "</rois></roiList>";
    f.close();
    SRun r = Run("stats scene.qrt --roi scene-regions.xml --csv");
    ASSERT_EQ(r.exitCode, 0) << r.err;
    std::stringstream s(r.out);
    std::string line;
    std::getline(s, line);
    EXPECT_EQ(line, "frame,time,region,name,type,mean,std,min,min_x,min_y,max,max_x,max_y,valid,center,profile");
    const unsigned regions = N + 2 + 2 + 1;
    for (unsigned frame = 0; frame < N; ++frame) {
        double e95 = 0, e50 = 0;
        for (unsigned k = 0; k < regions; ++k) {
            ASSERT_TRUE(std::getline(s, line));
            std::vector<std::string> c;
            std::string cell;
            for (std::stringstream cells(line); std::getline(cells, cell, ',');) c.push_back(cell);
            if (c.size() > 4 && c[3].front() == '"' && c[3].back() != '"') { // the quoted name with a comma
                c[3] += "," + c[4];
                c.erase(c.begin() + 4);
            }
            ASSERT_GE(c.size(), 15u) << line;
            EXPECT_EQ(std::stoul(c[0]), frame);
            EXPECT_NE(c[1].find(':'), std::string::npos) << "the frame's time: " << line;
            EXPECT_EQ(std::stoul(c[2]), k);
            const double mean = std::stod(c[5]);
            if (k == 0) {
                EXPECT_EQ(c[4], "Image");
                EXPECT_EQ(std::stoul(c[13]), W * H);
            } else if (k <= N) {
                // On the disc in its own frame, on the background (mean of its columns) elsewhere.
                const double x = DiscX(k - 1);
                EXPECT_NEAR(mean, k - 1 == frame ? 120 : Background(unsigned(x)), k - 1 == frame ? 0.12 : 0.35) << line;
                EXPECT_EQ(std::stoul(c[13]), 37u) << line; // pixel centres within 3.2 of the centre
            } else if (k == N + 1) {
                e95 = mean;
            } else if (k == N + 2) {
                e50 = mean;
            } else if (k == N + 3) {
                EXPECT_EQ(c[3], "\"top, left\"");
                EXPECT_NEAR(mean, (Background(0) + Background(19)) / 2, 0.02);
                EXPECT_EQ(std::stoul(c[13]), 200u);
            } else {
                // 96 profile values along row 5, each the background of its column.
                std::stringstream values(c[15]);
                double v;
                unsigned x = 0;
                for (; values >> v; ++x) EXPECT_NEAR(v, Background(x), 0.12) << x;
                EXPECT_EQ(x, W);
            }
        }
        // The recording's own emissivity is 0.95; a lower one reads the same radiance hotter.
        if (frame == 0) {
            EXPECT_NEAR(e95, 120, 0.12);
            EXPECT_GT(e50, e95 + 20);
        }
    }
    EXPECT_FALSE(std::getline(s, line)) << line;

    // The outlines on the picture; a damaged region file stops both commands with one line.
    r = Run("convert scene.qrt --roi scene-regions.xml -o regions.png");
    ASSERT_EQ(r.exitCode, 0) << r.err;
    EXPECT_EQ(Slurp(Path("regions.png")).substr(1, 3), "PNG");
    std::ofstream(Path("bad-regions.xml")) << "<roiList version=\"9.0\"/>";
    for (std::string cmd : {"stats scene.qrt --roi bad-regions.xml", "convert scene.qrt --roi bad-regions.xml -o r2.png"}) {
        r = Run(cmd);
        EXPECT_EQ(r.exitCode, 1) << cmd;
        EXPECT_EQ(std::count(r.err.begin(), r.err.end(), '\n'), 1) << r.err;
        EXPECT_NE(r.err.find("bad-regions.xml: roiList version '9.0'"), std::string::npos) << r.err;
    }
    EXPECT_FALSE(Exists(Path("r2.png")));
}

namespace {

std::vector<unsigned char> Bytes(const std::string& path)
{
    std::string s = Slurp(path);
    return std::vector<unsigned char>(s.begin(), s.end());
}

void PutBytes(const std::string& path, const std::vector<unsigned char>& bytes)
{
    std::ofstream(path, std::ios::binary).write(reinterpret_cast<const char*>(bytes.data()), bytes.size());
}

void Put16(std::vector<unsigned char>& b, uint64_t at, unsigned v)
{
    b[at] = static_cast<unsigned char>(v & 0xff);
    b[at + 1] = static_cast<unsigned char>(v >> 8);
}

} // namespace

TEST_F(ProgramTest, OutputsThatWouldReplaceTheInputAreRefused)
{
    const std::vector<unsigned char> scene = Bytes(Path("scene.qrt"));
    PutBytes(Path("rec.npy"), scene);
    PutBytes(Path("rec.status.tiff"), scene);
    ASSERT_EQ(::mkdir(Path("sub").c_str(), 0777), 0);
    ASSERT_EQ(::link(Path("rec.npy").c_str(), Path("hard.npy").c_str()), 0);
    ASSERT_EQ(::symlink("rec.npy", Path("soft.npy").c_str()), 0);
    const char* cases[] = {"convert rec.npy -o rec.npy", "convert rec.npy -o ./sub/../rec.npy",
                           "convert sub/../rec.npy -o rec.npy", "convert rec.npy -o hard.npy",
                           "convert rec.npy -o soft.npy", "convert rec.status.tiff -o rec.tiff",
                           "synth rec.npy --size 8x8 --frames 1"};
    for (const char* args : cases) {
        SRun r = Run(args);
        EXPECT_NE(r.exitCode, 0) << args;
        EXPECT_FALSE(r.signaled) << args;
        EXPECT_EQ(std::count(r.err.begin(), r.err.end(), '\n'), 1) << args << ": " << r.err;
        EXPECT_EQ(Bytes(Path("rec.npy")), scene) << args;
        EXPECT_EQ(Bytes(Path("rec.status.tiff")), scene) << args;
        EXPECT_FALSE(Exists(Path("rec.tiff"))) << args;
        EXPECT_TRUE(Leftovers("rec").size() == 2) << args;
    }
    EXPECT_NE(Run("synth rec.npy").err.find("--force"), std::string::npos);
    SRun r = Run("synth rec.npy --size 8x8 --frames 1 --force");
    EXPECT_EQ(r.exitCode, 0) << r.err;
    EXPECT_NE(Bytes(Path("rec.npy")), scene);
}

// Recordings whose sizes claim more than their bytes hold: one line naming
// the file and the sizes, no output, and no allocation the file cannot back
// (the program runs with 1 GB of address space).
TEST_F(ProgramTest, SizesTheFileCannotHoldAreRefused)
{
    const std::vector<unsigned char> scene = Bytes(Path("scene.qrt"));
    SRun r = Run("info --json " + Path("scene.qrt"));
    auto j = nlohmann::json::parse(r.out);
    uint64_t info = 0, pixels = 0;
    for (auto& b : j["blocks"]) {
        if (b["name"] == "SourceInfo") info = b["offset"].get<uint64_t>();
        if (b["name"] == "Pixels") pixels = b["offset"].get<uint64_t>() + 77;
    }
    ASSERT_GT(info, 0u);
    ASSERT_GT(pixels, 0u);
    // Offsets in the source info record and the pixels header.
    constexpr unsigned kImageWidth = 80, kFrameWidth = 123, kStride = 48, kHeaderFrameWidth = 34;
    struct SCase {
        const char* name;
        unsigned imageSize, frameSize, headerFrameSize, stride;
        const char* says;
    } cases[] = {
        {"bigframe.qrt", 96, 65535, 96, 256, "65535x65535"},   // the source info's frame
        {"bigheader.qrt", 96, 0, 65535, 256, "65535x65535"},   // no frame there: the header's
        {"bigimage.qrt", 65535, 96, 96, 12288, "65535x65535"}, // an image no frame backs
    };
    for (const SCase& c : cases) {
        std::vector<unsigned char> b = scene;
        const uint64_t payload = info + 77;
        Put16(b, payload + kImageWidth, c.imageSize);
        Put16(b, payload + kImageWidth + 2, c.imageSize == 96 ? 64 : c.imageSize);
        Put16(b, payload + kFrameWidth, c.frameSize);
        Put16(b, payload + kFrameWidth + 2, c.frameSize == 96 ? 64 : c.frameSize);
        Put16(b, pixels + kHeaderFrameWidth, c.headerFrameSize);
        Put16(b, pixels + kHeaderFrameWidth + 2, c.headerFrameSize == 96 ? 64 : c.headerFrameSize);
        for (int i = 0; i < 4; ++i) b[pixels + kStride + i] = static_cast<unsigned char>(c.stride >> (8 * i));
        // The source info's CRC, at offset 73 of its block header, made good.
        uint64_t size = 0;
        for (int i = 0; i < 8; ++i) size |= uint64_t(b[info + 65 + i]) << (8 * i);
        const uLong crc = crc32(0, &b[payload], static_cast<uInt>(size));
        for (int i = 0; i < 4; ++i) b[info + 73 + i] = static_cast<unsigned char>(crc >> (8 * i));
        PutBytes(Path(c.name), b);

        for (std::string cmd : {"stats ", "convert ", "frames "}) {
            std::string args = cmd + c.name + (cmd == "convert " ? " -o out-big.npy" : "");
#ifdef ORV_TEST_SANITIZED
            r = Run(args, "ASAN_OPTIONS=$ASAN_OPTIONS:max_allocation_size_mb=1024 ");
#else
            r = Run(args, "ulimit -v 1048576 && ");
#endif
            EXPECT_EQ(r.exitCode, 1) << args << ": " << r.err;
            EXPECT_EQ(std::count(r.err.begin(), r.err.end(), '\n'), 1) << args << ": " << r.err;
            EXPECT_NE(r.err.find(c.name), std::string::npos) << args << ": " << r.err;
            EXPECT_NE(r.err.find(c.says), std::string::npos) << args << ": " << r.err;
            EXPECT_NE(r.err.find(std::to_string(c.stride) + " bytes"), std::string::npos) << args << ": " << r.err;
            EXPECT_TRUE(Leftovers("out-").empty()) << args;
        }
        // verify checks CRCs, which are good: the sizes are what it reports.
        r = Run(std::string("verify ") + c.name);
        EXPECT_NE(r.exitCode, 0) << c.name;
        EXPECT_NE(r.err.find(c.says), std::string::npos) << r.err;
    }
}

TEST_F(ProgramTest, FamilyRecordingsGiveBackTheSceneInFactoryTemperature)
{
    // Noise is +-0.1 K and a count is at most 0.02 K in these families.
    // Marlowe and Tessel interleave presets with calibrations of their own:
    // a frame read with another preset's would be degrees off.
    const double tol = 0.13;
    const std::string unit = " --unit \"Temperature (Factory)\"";
    for (std::string family : {"ombria", "corvane", "marlowe", "tessel"}) {
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
        for (unsigned f = 0; f < N; ++f) {
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
        if (family == "corvane") {
            // Half the integration time, half the signal: (level + c) halves
            // from preset 0 to preset 1.
            r = Run("convert " + rec + " --unit Counts --frames 0:2 -o levels.csv");
            ASSERT_EQ(r.exitCode, 0) << r.err;
            const double first = ReadCsvFrame(Path("levels.csv"), 0)[0][W - 1] + 150.0;
            const double second = ReadCsvFrame(Path("levels.csv"), 1)[0][W - 1] + 150.0;
            EXPECT_NEAR(second / first, 0.5, 0.002);
        }
        if (family == "ombria") {
            r = Run("convert " + rec + unit + " --frames 0 --distance 200 -o far.csv");
            ASSERT_EQ(r.exitCode, 0) << r.err;
            EXPECT_GT(ReadCsvFrame(Path("far.csv"), 0)[H / 2][cx], 120.0 + 0.5);
        }
    }
}

TEST_F(ProgramTest, TesselOffersTheObjectSignal)
{
    SRun r = Run("synth os.qrt --size 96x64 --frames 2 --family tessel");
    ASSERT_EQ(r.exitCode, 0) << r.err;
    r = Run("convert os.qrt --unit \"Object Signal\" --frames 0 -o os.csv");
    ASSERT_EQ(r.exitCode, 0) << r.err;
    auto rows = ReadCsvFrame(Path("os.csv"), 0);
    ASSERT_EQ(rows.size(), H);
    // It grows with the scene: across the gradient, and on to the disc.
    EXPECT_LT(rows[0][0], rows[0][W - 1]);
    EXPECT_LT(rows[0][W - 1], rows[H / 2][static_cast<unsigned>(DiscX(0))]);
}
