// info: what a recording holds: file header, blocks, source info and the
// units it can be shown in.
#include <cstdio>
#include <string>

#include <nlohmann/json.hpp>

#include "orv/PixelType.h"
#include "reduce/convert/ConvertContext.h"
#include "reduce/convert/Converter.h"
#include "reduce/objects/ObjectParametersReduceObject.h"
#include "reduce/objects/SourceInfoReduceObject.h"
#include "tools/orvreduce/Common.h"

namespace orv::reduce::cli {

namespace {

std::string Hex8(uint32_t v)
{
    char text[16];
    std::snprintf(text, sizeof text, "%08X", v);
    return text;
}

std::string SizeText(uint64_t size)
{
    // All ones: the last block runs to the end of the file.
    return size == ~uint64_t(0) ? std::string("to end") : std::to_string(size);
}

std::string FrameText(uint64_t frame) { return frame == ~uint64_t(0) ? std::string("-") : std::to_string(frame); }

} // namespace

int RunInfo(const std::string& path, bool asJson)
{
    CRecordingReader reader;
    if (!OpenRecording(reader, path)) return kExitFailure;
    auto info = reader.sourceInfo();

    TArray<EUnit> units;
    CConvertContext context;
    context.setReduceObjs(&reader.reduceObjs());
    bool haveUnits = context.GetUnits(units);

    nlohmann::ordered_json j;
    j["file"] = path;
    j["format"] = kInfoFileName;
    j["frames"] = reader.numFrames();
    j["declaredFrames"] = reader.declaredFrames();
    j["frameBytes"] = reader.frameSize();
    j["dataOffset"] = reader.dataOffset();
    j["trailingBytes"] = reader.trailingBytes();
    j["blocks"] = nlohmann::ordered_json::array();
    for (const SInfoFileBlock& b : reader.blocks()) {
        nlohmann::ordered_json jb;
        jb["name"] = b.name;
        jb["type"] = GuidToString(b.typeID).c_str();
        jb["version"] = "0x" + Hex8(b.version);
        jb["preset"] = int(b.preset);
        jb["frame"] = FrameText(b.frame);
        jb["offset"] = b.headerOffset;
        jb["size"] = SizeText(b.size);
        jb["crc"] = Hex8(b.crc);
        j["blocks"].push_back(jb);
    }
    nlohmann::ordered_json js;
    js["camera"] = info->camera.c_str();
    js["model"] = info->cameraModel.c_str();
    js["serial"] = info->cameraSerial.c_str();
    js["lens"] = info->lens.c_str();
    js["imageWidth"] = info->imageWidth;
    js["imageHeight"] = info->imageHeight;
    js["frameWidth"] = reader.frameWidth();
    js["frameHeight"] = reader.frameHeight();
    js["pixelType"] = PixelTypeName(reader.pixelType()).c_str();
    js["pixelTypeID"] = GuidToString(reader.pixelType()).c_str();
    js["adBits"] = info->adBits;
    js["baseUnit"] = UnitToString(info->baseUnit);
    if (IsTemperatureUnit(info->baseUnit)) js["baseScale"] = ScaleSymbol(info->baseTempType);
    if (info->timeValid) js["time"] = info->time.Format().c_str();
    js["presets"] = nlohmann::ordered_json::array();
    for (unsigned i = 0; i < 8; ++i) {
        const SPresetInfo& p = info->presets[i];
        if (!p.available) continue;
        nlohmann::ordered_json jp;
        jp["preset"] = i;
        jp["frames"] = p.numFrames;
        if (p.frameRateValid) jp["frameRate"] = p.frameRate;
        if (p.intTimeValid) jp["integrationTime"] = p.intTime;
        jp["calibrated"] = p.calibrated;
        if (p.calibrated) jp["range"] = {p.minTemp, p.maxTemp};
        js["presets"].push_back(jp);
    }
    j["sourceInfo"] = js;
    if (auto params = reader.reduceObjs().GetObjectParameters(false)) {
        j["objectParameters"] = {{"emissivity", params->emissivity},
                                 {"distance", params->distance},
                                 {"reflectedTemp", params->reflectedTemp - 273.15},
                                 {"atmosphereTemp", params->atmosphereTemp - 273.15},
                                 {"relativeHumidity", params->relativeHumidity}};
    }
    j["units"] = nlohmann::ordered_json::array();
    if (haveUnits)
        for (EUnit u : units) j["units"].push_back(UnitToString(u));

    if (asJson) {
        std::printf("%s\n", j.dump(2).c_str());
        return 0;
    }

    std::printf("File        %s\n", path.c_str());
    std::printf("Format      %s, %llu frames of %u bytes from offset %llu", kInfoFileName,
                static_cast<unsigned long long>(reader.numFrames()), reader.frameSize(),
                static_cast<unsigned long long>(reader.dataOffset()));
    if (reader.trailingBytes())
        std::printf(", %llu bytes of a cut frame", static_cast<unsigned long long>(reader.trailingBytes()));
    std::printf("\n\nBlocks\n  %-20s %-38s %-10s %6s %6s %10s %8s\n", "name", "type", "version", "preset", "frame",
                "size", "CRC");
    for (const auto& jb : j["blocks"])
        std::printf("  %-20s %-38s %-10s %6d %6s %10s %8s\n", jb["name"].get<std::string>().c_str(),
                    jb["type"].get<std::string>().c_str(), jb["version"].get<std::string>().c_str(),
                    jb["preset"].get<int>(), jb["frame"].get<std::string>().c_str(),
                    jb["size"].get<std::string>().c_str(), jb["crc"].get<std::string>().c_str());
    std::printf("\nSource info\n");
    std::printf("  camera      %s%s%s\n", info->camera.c_str(), info->cameraModel.empty() ? "" : ", model ",
                info->cameraModel.c_str());
    std::printf("  image       %u x %u (frame %u x %u)\n", info->imageWidth, info->imageHeight, reader.frameWidth(),
                reader.frameHeight());
    std::printf("  pixel type  %s, %d-bit\n", PixelTypeName(reader.pixelType()).c_str(), info->adBits);
    std::printf("  base unit   %s\n", UnitLabel(info->baseUnit, info->baseTempType).c_str());
    if (info->timeValid) std::printf("  started     %s\n", info->time.Format().c_str());
    for (unsigned i = 0; i < 8; ++i) {
        const SPresetInfo& p = info->presets[i];
        if (!p.available) continue;
        std::printf("  preset %u    %u frames", i, p.numFrames);
        if (p.frameRateValid) std::printf(", %.3g Hz", p.frameRate);
        if (p.intTimeValid) std::printf(", integration %.6g s", p.intTime);
        if (p.calibrated) std::printf(", calibrated %g to %g", p.minTemp, p.maxTemp);
        std::printf("\n");
    }
    if (j.contains("objectParameters")) {
        auto& op = j["objectParameters"];
        std::printf("\nObject parameters\n  emissivity %.3g, distance %.3g m, reflected %.2f C, atmosphere %.2f C\n",
                    op["emissivity"].get<double>(), op["distance"].get<double>(), op["reflectedTemp"].get<double>(),
                    op["atmosphereTemp"].get<double>());
    }
    std::printf("\nUnits\n");
    if (!haveUnits || units.size() == 0) std::printf("  (none besides the raw pixels)\n");
    for (EUnit u : units) std::printf("  %s\n", UnitToString(u));
    return 0;
}

void AddInfo(CLI::App& app)
{
    struct SArgs {
        std::string path;
        bool json = false;
    };
    auto args = std::make_shared<SArgs>();
    CLI::App* cmd = app.add_subcommand("info", "Show a recording's header, blocks, source info and units");
    cmd->footer("Example: orvreduce info scene.qrt --json");
    cmd->add_option("FILE", args->path, "Recording to inspect")->required();
    cmd->add_flag("--json", args->json, "Print the same as one JSON document");
    cmd->callback([args] { g_exitCode = RunInfo(args->path, args->json); });
}

} // namespace orv::reduce::cli
