// roi: list the regions of a region file drawn on a frame of a given size,
// and export their masks as SVG drawings or bitmaps.
#include <cstdio>
#include <cstring>
#include <string>

#include "orv/XMLFile.h"
#include "reduce/roi/RoiList.h"
#include "tools/orvreduce/Common.h"

namespace orv::reduce::cli {

namespace {

struct SRoiOptions {
    std::string input;
    std::string size;
    std::string svg;
    std::string bmp;
};

// The list reports only true or false; this says which part of the file it stopped at.
std::string WhyNotLoaded(const std::string& path)
{
    TSharedPtr<IFile> file = fileSystem()->Open(path.c_str(), IFileSystem::openRead);
    if (!file) return fileSystem()->Exists(path.c_str()) ? "cannot be opened" : "no such file";
    unsigned char head[26] = {};
    unsigned long n = file->Read(head, sizeof head);
    file->SeekToBegin();
    if (n >= 4 && std::memcmp(head, "SROI", 4) == 0) {
        if (n < 6) return "binary region file cut short in its header";
        const unsigned major = head[4], minor = head[5];
        const std::string version = std::to_string(major) + "." + std::to_string(minor);
        if (major > 1 || (major == 1 && minor > 5) || (major == 0 && minor > 2))
            return "binary region file of version " + version + "; versions 0.0 to 0.2 and 1.0 to 1.5 are read";
        const unsigned at = major == 1 ? (minor >= 5 ? 22 : minor >= 3 ? 14 : 6) : 6;
        uint32_t count = 0;
        if (n >= at + 4) std::memcpy(&count, head + at, 4);
        if (n >= at + 4 && count > CRoiList::kMaxBinaryRois)
            return "binary region file names " + std::to_string(count) + " regions; at most 256 are read";
        return "binary region file of version " + version + " is cut short or counts more points than it holds";
    }
    CXMLFile xml;
    if (!xml.Load(file)) return "neither a binary region file nor well-formed XML";
    if (!xml.FindFirst("roiList")) return "XML without a roiList element";
    if (!xml.GetCurr()->GetAttributes().Exists("version")) return "roiList has no version";
    return "roiList version '" + std::string(xml.GetCurr()->GetAttribute("version").c_str()) +
           "' is not 0.x or 1.x";
}

// OUT for a single region, OUT with "-<index>" before its extension for several.
std::string OutputName(const std::string& out, size_t index, bool several)
{
    if (!several) return out;
    size_t slash = out.find_last_of('/');
    size_t dot = out.find_last_of('.');
    if (dot == std::string::npos || (slash != std::string::npos && dot < slash)) dot = out.size();
    return out.substr(0, dot) + "-" + std::to_string(index) + out.substr(dot);
}

int RunRoi(const SRoiOptions& o)
{
    unsigned w = 0, h = 0;
    char tail = 0;
    if (std::sscanf(o.size.c_str(), "%ux%u%c", &w, &h, &tail) != 2 || w == 0 || h == 0 || w > 65535 || h > 65535)
        return Fail("--size wants WxH from 1x1 to 65535x65535, not '%s'", o.size.c_str());
    CRoiList list;
    list.SetImageSize(static_cast<unsigned short>(w), static_cast<unsigned short>(h));
    if (!list.Load(CString(o.input.c_str())))
        return Fail("%s: %s", o.input.c_str(), WhyNotLoaded(o.input).c_str());

    std::printf("%s: %zu region%s on %u x %u\n", o.input.c_str(), list.size() - 1, list.size() == 2 ? "" : "s", w,
                h);
    std::printf("%5s  %-20s %-18s %6s %-21s %8s  %s\n", "index", "name", "type", "points", "bounds", "pixels",
                "settings");
    const bool several = list.size() > 2;
    for (size_t i = 1; i < list.size(); ++i) {
        SRoi& r = *list.at(unsigned(i));
        TArray<unsigned int> pixels;
        r.GetIndicies(static_cast<unsigned short>(w), static_cast<unsigned short>(h), pixels);
        char box[64];
        std::snprintf(box, sizeof box, "%d,%d-%d,%d", r.bounds.left, r.bounds.top, r.bounds.right, r.bounds.bottom);
        std::string settings;
        char text[64];
        if (r.useEmissivity) {
            std::snprintf(text, sizeof text, "emissivity %g ", r.emissivity);
            settings += text;
        }
        if (r.useDistance) {
            std::snprintf(text, sizeof text, "distance %g m", r.distance);
            settings += text;
        }
        std::printf("%5zu  %-20s %-18s %6zu %-21s %8zu  %s\n", i, r.name.c_str(), RoiTypeToString(r.type),
                    r.points.size(), box, pixels.size(), settings.c_str());
        if (!o.svg.empty()) {
            std::string out = OutputName(o.svg, i, several);
            if (!r.ExportSvg(out.c_str())) return Fail("%s: region %zu: cannot write the SVG drawing", out.c_str(), i);
            std::printf("       wrote %s\n", out.c_str());
        }
        if (!o.bmp.empty()) {
            std::string out = OutputName(o.bmp, i, several);
            if (!r.ExportBitmask(out.c_str())) return Fail("%s: region %zu: cannot write the bitmap", out.c_str(), i);
            std::printf("       wrote %s\n", out.c_str());
        }
    }
    return 0;
}

} // namespace

void AddRoi(CLI::App& app)
{
    auto o = std::make_shared<SRoiOptions>();
    CLI::App* cmd = app.add_subcommand("roi", "List the regions of a region file and export their masks");
    cmd->footer("Reads the XML region files this library writes and the older binary ones.\n"
                "With several regions, OUT gets the region's index before its extension:\n"
                "regions.svg becomes regions-1.svg, regions-2.svg ...\n"
                "Example: orvreduce roi regions.xml --size 320x240 --svg regions.svg");
    cmd->add_option("FILE", o->input, "Region file")->required();
    cmd->add_option("--size", o->size, "Frame size WxH the regions are drawn on")->required();
    cmd->add_option("--svg", o->svg, "Write each region's pixels and outline as an SVG drawing");
    cmd->add_option("--bmp", o->bmp, "Write each region's mask as a 24-bit bitmap");
    cmd->callback([o] { g_exitCode = RunRoi(*o); });
}

} // namespace orv::reduce::cli
