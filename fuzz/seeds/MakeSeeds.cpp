// Writes the seed inputs of the fuzz targets into fuzz/corpus/<target>/, made
// with the library's own writers so that they start out valid. Run once after
// a format changes: make-fuzz-seeds <path of fuzz/corpus>.
#include <cstdio>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <string>
#include <vector>

#include <jpeglib.h>

#include "orv/NormFile.h"
#include "orv/PixelType.h"
#include "orv/RCalFile.h"
#include "orv/XMLFile.h"
#include "reduce/objects/CorrectionCfgReduceObject.h"
#include "reduce/objects/CorrectionReduceObject.h"
#include "reduce/objects/MarloweFactoryCalReduceObject.h"
#include "reduce/objects/TesselFactoryCalReduceObject.h"
#include "reduce/objects/RCalReduceObject.h"
#include "reduce/objects/SourceInfoReduceObject.h"
#include "reduce/store/InfoFile.h"
#include "reduce/store/PixelsHeader.h"
#include "reduce/store/ReduceObjectFactory.h"

using namespace orv;
using namespace orv::reduce;

namespace {

std::filesystem::path gRoot;

using Bytes = std::vector<uint8_t>;

void Write(const char* target, const std::string& name, const Bytes& bytes)
{
    const std::filesystem::path dir = gRoot / target;
    std::filesystem::create_directories(dir);
    std::ofstream out(dir / ("seed-" + name), std::ios::binary);
    out.write(reinterpret_cast<const char*>(bytes.data()), static_cast<std::streamsize>(bytes.size()));
}

void Write(const char* target, const std::string& name, const std::string& text)
{
    Write(target, name, Bytes(text.begin(), text.end()));
}

Bytes Take(CMemFile& memory) { return Bytes(memory.data(), memory.data() + memory.size()); }

template <class T>
void Append(Bytes& bytes, T value)
{
    const auto* p = reinterpret_cast<const uint8_t*>(&value);
    bytes.insert(bytes.end(), p, p + sizeof value);
}

void InfoFilesAndObjects()
{
    TArray<CString> names;
    reduceObjectFactory().GetNames(names);
    CReduceObjectArray all;
    for (size_t i = 0; i < names.size(); ++i) {
        TSharedPtr<IReduceObject> object = reduceObjectFactory().CreateByName(names.get(i));
        object->valid = true;
        CMemFile payload;
        payload.Create();
        if (!object->Save(TSharedPtr<IFile>(&payload, noDestroy), 0)) continue;
        Bytes entry;
        entry.push_back(static_cast<uint8_t>(i));
        Append<uint32_t>(entry, object->version);
        entry.push_back(0);
        const Bytes body = Take(payload);
        entry.insert(entry.end(), body.begin(), body.end());
        Write("fuzz_reduce_object", names.get(i).c_str(), entry);
        all.add(object);
    }
    CMemFile info;
    info.Create();
    SaveInfoFile(TSharedPtr<IFile>(&info, noDestroy), all, 0);
    Write("fuzz_info_file", "all-types", Take(info));

    CMemFile empty;
    empty.Create();
    CreateInfoFile(TSharedPtr<IFile>(&empty, noDestroy));
    Write("fuzz_info_file", "header-only", Take(empty));
}

// A small recording: source info, then a "Pixels" block and three frames.
// A user calibration of three presets, one per temperature step.
CRCalFile Calibration()
{
    CRCalFile cal;
    cal.SetBandpass(7.5, 13.0);
    cal.SetCoefficients(0, 2, TArray<double>{1.0e-3, 3.5e-7, 2.0e-12});
    cal.SetLookup(0, TArray<double>{0.0015, 0.0035, 0.0080}, TArray<double>{-45.0, 21.0, 110.0});
    cal.SetBackgroundValue(0, 12.5);
    cal.SetCoefficients(1, 1, TArray<double>{0.5, 2.0e-6});
    cal.SetTempCoefficients(1, 2, TArray<double>{-62.0, 16500.0, -2.1e5});
    cal.SetBackgroundImage(1, 2, 2, TArray<double>{1.0, 2.0, 3.0, 4.0});
    cal.SetCoefficients(2, -1, TArray<double>{0.25, 1.5});
    return cal;
}

Bytes Recording(SGuid pixelType, unsigned bytesPerPixel, bool oldHeader, bool calibrated = false)
{
    CReduceObjectArray objects;
    if (calibrated) {
        auto cal = objects.GetObjectOfType(CRCalReduceObject::typeID, -1, true).DynamicCast<CRCalReduceObject>();
        cal->valid = true;
        cal->rcal = Calibration();
        auto correction = objects.GetCorrection(0, true);
        correction->Create(8, 4, 0, 7);
        correction->valid = true;
        correction->gains[3] = 1.5f;
        correction->offsets[5] = -20;
        correction->badPixels[6] = 1;
        correction->replacements[6] = 7;
        objects.GetCorrectionCfg(true)->valid = true;
    }
    TSharedPtr<CSourceInfoReduceObject> info = objects.GetSourceInfo(true);
    info->valid = true;
    info->pixelType = pixelType;
    info->imageWidth = info->frameWidth = info->packetWidth = 8;
    info->imageHeight = info->frameHeight = info->packetHeight = 4;
    info->presets[0].available = true;
    info->presets[0].numFrames = 3;
    CMemFile file;
    file.Create();
    TSharedPtr<IFile> out(&file, noDestroy);
    const unsigned frameSize = 8 * 4 * bytesPerPixel;
    if (oldHeader) {
        // The old 44-byte form, as an old block version writes it.
        SaveInfoFile(out, objects, infoFileRecording);
        SInfoFileBlock block{};
        std::strcpy(block.name, kPixelsBlockName);
        block.typeID = guidPixels;
        block.version = 0x10000;
        block.preset = -1;
        block.frame = ~uint64_t(0);
        block.flags = blockFlagValid;
        block.size = ~uint64_t(0);
        WriteInfoFileBlock(out, block);
        uint8_t old[kOldPixelsHeaderSize] = {};
        std::memcpy(old, &pixelType, 16);
        const uint16_t width = static_cast<uint16_t>(bytesPerPixel);
        std::memcpy(old + 16, &width, 2);
        const uint16_t sizes[7] = {8, 4, 8, 4, 8, 4, 1};
        std::memcpy(old + 26, sizes, sizeof sizes);
        std::memcpy(old + 40, &frameSize, 4);
        out->WriteBytes(old, sizeof old);
    } else {
        SPixelsHeader header;
        InitPixelsHeader(header, info, true);
        header.pixelWidth = static_cast<uint16_t>(bytesPerPixel);
        header.packetSize = header.frameStride = frameSize;
        StartQRTFile(out, objects, header);
    }
    for (unsigned i = 0; i < 3 * frameSize; ++i) out->PutUInt8(static_cast<uint8_t>(i * 7));
    return Take(file);
}

void Recordings()
{
    Write("fuzz_recording", "grayscale", Recording(pixelGrayscale, 2, false));
    Write("fuzz_recording", "rgb", Recording(pixelRGB, 3, false));
    Write("fuzz_recording", "yuv-old-header", Recording(pixelYUV, 2, true));
    Write("fuzz_convert", "counts", Recording(pixelGrayscale, 2, false));
    Write("fuzz_convert", "calibrated", Recording(pixelGrayscale, 2, false, true));
    Write("fuzz_reduction", "counts", Recording(pixelGrayscale, 2, false));
    Write("fuzz_reduction", "calibrated", Recording(pixelGrayscale, 2, false, true));
}

void Frames()
{
    const unsigned bytes[] = {2, 3, 2};
    const char* names[] = {"grayscale", "rgb", "yuv"};
    for (unsigned t = 0; t < 3; ++t) {
        Bytes frame;
        frame.push_back(static_cast<uint8_t>(t));
        Append<uint16_t>(frame, 8);
        Append<uint16_t>(frame, 4);
        frame.push_back(t == 0 ? dtUInt16 : dtRGB24);
        for (unsigned i = 0; i < 8 * 4 * bytes[t]; ++i) frame.push_back(static_cast<uint8_t>(i * 13));
        Write("fuzz_frame_filter", names[t], frame);
    }
}

void Calibrations()
{
    CRCalFile cal = Calibration();

    const CString text = cal.ToXML();
    const std::string xml(text.c_str(), text.length());
    Write("fuzz_rcal_file", "plain", std::string(1, '\0') + xml);
    Write("fuzz_rcal_file", "text", std::string(1, '\2') + xml);
    CMemFile stream;
    stream.Create();
    cal.Save(TSharedPtr<IFile>(&stream, noDestroy), 0);
    Bytes prefixed{1};
    const Bytes body = Take(stream);
    prefixed.insert(prefixed.end(), body.begin(), body.end());
    Write("fuzz_rcal_file", "stream", prefixed);
    Write("fuzz_xml_file", "calibration", xml);
}

void Documents()
{
    Write("fuzz_xml_file", "regions",
          "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n"
          "<regions version=\"1\">\n"
          "  <roi name=\"spot &amp; box\" type=\"rect\" x=\"1\" y=\"2\" w=\"3\" h=\"4\"/>\n"
          "  <roi name=\"line\"><point x=\"0\" y=\"0\"/><point x=\"5\" y=\"7\"/></roi>\n"
          "  <note><![CDATA[raw <text>]]> and more</note>\n"
          "</regions>\n");
    Write("fuzz_xml_file", "nested", "<a b='1'><c><d e=\"&#x41;\">text</d></c><c/></a>");
}

void NormFiles()
{
    const std::filesystem::path dir = std::filesystem::temp_directory_path() / "orv-fuzz-seeds";
    std::filesystem::create_directories(dir);
    const float gains[12] = {1, 1.5f, 0.5f, 2, 1, 1, 1, 1, 0.25f, 1, 1, 3};
    const int16_t offsets[12] = {0, -3, 5, 7, 0, 0, 100, -100, 1, 2, 3, 4};
    const uint8_t bad[12] = {0, 1, 0, 0, 0, 0, 0, 1, 0, 0, 0, 0};
    const uint32_t replacements[12] = {0, 0, 0, 0, 0, 0, 0, 6, 0, 0, 0, 0};
    const std::string gain = (dir / "g.mxg").string(), offset = (dir / "o.mxo").string(),
                      badPixel = (dir / "b.mbp").string();
    CNormFile::SaveGainTable(fileSystem(), gain.c_str(), 4, 3, 0, gains);
    CNormFile::SaveOffsetTable(fileSystem(), offset.c_str(), 4, 3, 1, offsets);
    CNormFile::SaveBadPixelTable(fileSystem(), badPixel.c_str(), 4, 3, 2, bad, replacements);
    for (const auto& [name, path] : {std::pair{"gain", gain}, {"offset", offset}, {"bad-pixels", badPixel}}) {
        std::ifstream in(path, std::ios::binary);
        Write("fuzz_norm_file", name, Bytes((std::istreambuf_iterator<char>(in)), std::istreambuf_iterator<char>()));
    }
    std::filesystem::remove_all(dir);
}

Bytes EncodeJpeg(int width, int height, bool color, bool progressive)
{
    jpeg_compress_struct info;
    jpeg_error_mgr errors;
    info.err = jpeg_std_error(&errors);
    jpeg_create_compress(&info);
    unsigned char* buffer = nullptr;
    unsigned long size = 0;
    jpeg_mem_dest(&info, &buffer, &size);
    info.image_width = static_cast<JDIMENSION>(width);
    info.image_height = static_cast<JDIMENSION>(height);
    info.input_components = color ? 3 : 1;
    info.in_color_space = color ? JCS_RGB : JCS_GRAYSCALE;
    jpeg_set_defaults(&info);
    jpeg_set_quality(&info, 75, TRUE);
    if (progressive) jpeg_simple_progression(&info);
    jpeg_start_compress(&info, TRUE);
    std::vector<unsigned char> row(static_cast<size_t>(width) * info.input_components);
    while (info.next_scanline < info.image_height) {
        for (size_t i = 0; i < row.size(); ++i) row[i] = static_cast<unsigned char>(i * 9 + info.next_scanline * 17);
        JSAMPROW rows[1] = {row.data()};
        jpeg_write_scanlines(&info, rows, 1);
    }
    jpeg_finish_compress(&info);
    jpeg_destroy_compress(&info);
    // Output buffer size, three bytes, then the stream.
    const uint32_t out = static_cast<uint32_t>(width * height * 3);
    Bytes bytes{static_cast<uint8_t>(out), static_cast<uint8_t>(out >> 8), static_cast<uint8_t>(out >> 16)};
    bytes.insert(bytes.end(), buffer, buffer + size);
    free(buffer);
    return bytes;
}

void Jpegs()
{
    Write("fuzz_jpeg", "rgb-16x8", EncodeJpeg(16, 8, true, false));
    Write("fuzz_jpeg", "gray-9x5", EncodeJpeg(9, 5, false, false));
    Write("fuzz_jpeg", "progressive-8x8", EncodeJpeg(8, 8, true, true));
}

void Deinterlace()
{
    auto params = [](int16_t w, int16_t h, int8_t bpp, int16_t in, int16_t out) {
        Bytes bytes;
        Append(bytes, w);
        Append(bytes, h);
        Append(bytes, bpp);
        Append(bytes, in);
        Append(bytes, out);
        for (int i = 0; i < 64; ++i) bytes.push_back(static_cast<uint8_t>(i));
        return bytes;
    };
    Write("fuzz_deinterlace", "odd-rows", params(4, 5, 1, -1, -1));
    Write("fuzz_deinterlace", "padded", params(3, 4, 2, 8, 10));
}

void Texts()
{
    const std::pair<uint8_t, const char*> texts[] = {
        {0, "2024-02-29 23:59:59.1234567"}, {0, " 2024-03-01T12:30Z "}, {0, "2023:365:23:59:59.5"},
        {0, "123:04:05:06"},                {2, "-2e-3"},                {2, " 4294967295 "},
        {2, "nan"},                         {3, "{9C3C13F6-1A10-49C5-86C9-ACF8A928DCC6}"},
    };
    int n = 0;
    for (const auto& [pick, text] : texts)
        Write("fuzz_text", std::to_string(n++), std::string(1, static_cast<char>(pick)) + text);
    Bytes format{1};
    Append<int64_t>(format, 0x8D8A5E0F2F4C000);
    const std::string f = "%Y-%m-%d %H:%M:%S.%f %j %% %q";
    format.insert(format.end(), f.begin(), f.end());
    Write("fuzz_text", "format", format);
}

// Factory calibrations with the values of real cameras, so that the fuzzer
// starts from payloads the converters take, not from zeros. Recordings of
// these families for fuzz_convert come from `orvreduce synth --family`.
void FamilyCalibrations()
{
    TArray<CString> names;
    reduceObjectFactory().GetNames(names);
    auto entry = [&](const IReduceObject& object) {
        Bytes bytes;
        bytes.push_back(static_cast<uint8_t>(names.find(CString(object.GetName()))));
        Append<uint32_t>(bytes, object.version);
        bytes.push_back(0);
        return bytes;
    };
    CMarloweFactoryCalReduceObject marlowe;
    marlowe.polyOrder = 5;
    const double coeffs[7] = {1.4e-5, 8.6e-8, 1e-13, 0.0, 0.0, 1e-25, 0.0};
    std::memcpy(marlowe.coeffs, coeffs, sizeof coeffs);
    marlowe.rbfR = 0.032;
    marlowe.rbfB = 1400.0;
    marlowe.rbfF = 1.0;
    marlowe.atmX = 0.8;
    marlowe.atmA1 = 0.006569;
    marlowe.atmA2 = 0.01262;
    marlowe.atmB1 = 0.0005;
    marlowe.atmB2 = 0.001;
    marlowe.minTemperature = -20.0f;
    marlowe.maxTemperature = 150.0f;
    marlowe.minCounts = 1000;
    marlowe.maxCounts = 15000;
    marlowe.CreateLUT(3);
    CMemFile m;
    m.Create();
    marlowe.Save(TSharedPtr<IFile>(&m, noDestroy), 0);
    Bytes mb = entry(marlowe);
    const Bytes mp = Take(m);
    mb.insert(mb.end(), mp.begin(), mp.end());
    Write("fuzz_reduce_object", "MarloweFactoryCal-camera", mb);

    CTesselFactoryCalReduceObject tessel;
    namespace rec = tesselRecord;
    const std::pair<SRecordField, float> fields[] = {
        {rec::R, 500000.0f}, {rec::B, 1430.0f}, {rec::F, 1.0f}, {rec::alpha1, 0.006569f},
        {rec::alpha2, 0.01262f}, {rec::beta1, 0.0005f}, {rec::beta2, 0.001f}, {rec::X, 0.8f},
        {rec::clampHighTemp, 443.15f}, {rec::validHighTemp, 423.15f}, {rec::validLowTemp, 253.15f},
        {rec::clampLowTemp, 233.15f}, {rec::rangeHighTemp, 443.15f}, {rec::rangeLowTemp, 233.15f},
        {rec::driftK0, 1.0f}, {rec::driftK1, 0.05f}, {rec::driftT0, 303.15f}, {rec::driftK2, 0.02f},
        {rec::driftA9, 451.0f}, {rec::driftB9, 0.1f}, {rec::gain, 1.1f}, {rec::offset, 200.0f}};
    for (const auto& [field, value] : fields) tessel.SetFloat(field, value);
    PutRecordValue<uint16_t>(tessel.record, rec::adjustMode, 2);
    CMemFile t;
    t.Create();
    tessel.Save(TSharedPtr<IFile>(&t, noDestroy), 0);
    Bytes tb = entry(tessel);
    const Bytes tp = Take(t);
    tb.insert(tb.end(), tp.begin(), tp.end());
    Write("fuzz_reduce_object", "TesselFactoryCal-camera", tb);
}

} // namespace

int main(int argc, char** argv)
{
    if (argc != 2) {
        std::fprintf(stderr, "usage: %s <fuzz/corpus>\n", argv[0]);
        return 2;
    }
    gRoot = argv[1];
    InfoFilesAndObjects();
    Recordings();
    Frames();
    Calibrations();
    Documents();
    NormFiles();
    Jpegs();
    Deinterlace();
    Texts();
    FamilyCalibrations();
    return 0;
}
