#include "orv/RCalFile.h"

#include <charconv>
#include <cmath>
#include <cstring>
#include <string>

#include <pugixml.hpp>

namespace orv {

namespace {

constexpr const char* kRoot = "rcal";
constexpr const char* kFormatVersion = "1.0";

// Numbers are read and written without the locale, so that a file means the
// same wherever it is read.
bool ParseDouble(const char*& p, const char* end, double& value)
{
    while (p < end && (*p == ' ' || *p == '\t' || *p == '\r' || *p == '\n' || *p == ',')) ++p;
    if (p == end) return false;
    if (*p == '+') ++p; // from_chars does not take a leading plus
    auto [next, ec] = std::from_chars(p, end, value);
    if (ec != std::errc() || !std::isfinite(value)) return false;
    p = next;
    // A number must end at a separator or at the end.
    return p == end || *p == ' ' || *p == '\t' || *p == '\r' || *p == '\n' || *p == ',';
}

bool AtEnd(const char* p, const char* end)
{
    while (p < end && (*p == ' ' || *p == '\t' || *p == '\r' || *p == '\n' || *p == ',')) ++p;
    return p == end;
}

bool ParseNumber(const char* text, double& value)
{
    const char* p = text;
    const char* end = text + std::strlen(text);
    return ParseDouble(p, end, value) && AtEnd(p, end);
}

bool ParseInt(const char* text, long long low, long long high, long long& value)
{
    const char* end = text + std::strlen(text);
    while (text < end && (*text == ' ' || *text == '\t')) ++text;
    if (text < end && *text == '+') ++text;
    auto [next, ec] = std::from_chars(text, end, value);
    if (ec != std::errc() || !AtEnd(next, end)) return false;
    return value >= low && value <= high;
}

// Reads exactly count numbers from a whitespace list.
bool ParseList(const char* text, size_t count, TArray<double>& out)
{
    const char* p = text;
    const char* end = text + std::strlen(text);
    // Each number takes at least one character: a larger count cannot be in
    // the text, whatever a size attribute claims.
    if (count > static_cast<size_t>(end - p)) return false;
    TArray<double> values;
    values.reserve(count);
    for (size_t i = 0; i < count; ++i) {
        double v = 0;
        if (!ParseDouble(p, end, v)) return false;
        values.add(v);
    }
    if (!AtEnd(p, end)) return false;
    out = std::move(values);
    return true;
}

std::string FormatDouble(double v)
{
    char buffer[32];
    auto [end, ec] = std::to_chars(buffer, buffer + sizeof buffer, v);
    return ec == std::errc() ? std::string(buffer, end) : std::string("0");
}

std::string FormatList(const TArray<double>& values, size_t perLine)
{
    std::string text;
    for (size_t i = 0; i < values.size(); ++i) {
        if (i > 0) text += (perLine && i % perLine == 0) ? "\n" : " ";
        text += FormatDouble(values.get(i));
    }
    return text;
}

bool ValidRadianceOrder(int order, size_t count)
{
    if (order == -1 || order == -2) return count == 2;
    if (order == 0) return count == 0;
    return order > 0 && order <= CRCalFile::kMaxOrder && count == static_cast<size_t>(order) + 1;
}

bool ValidTempOrder(int order, size_t count)
{
    return order >= 1 && order <= CRCalFile::kMaxOrder && count == static_cast<size_t>(order) + 1;
}

bool AllFinite(const TArray<double>& values)
{
    for (double v : values)
        if (!std::isfinite(v)) return false;
    return true;
}

bool ValidLookup(const TArray<double>& radiance, const TArray<double>& temperature)
{
    if (radiance.size() < 2 || radiance.size() != temperature.size()) return false;
    if (!AllFinite(radiance) || !AllFinite(temperature)) return false;
    for (size_t i = 1; i < radiance.size(); ++i)
        if (!(radiance.get(i) > radiance.get(i - 1))) return false;
    return true;
}

unsigned int ImageCRC(const TArray<double>& image)
{
    return CalcCRC32(0, image.data(), static_cast<unsigned long>(image.size() * sizeof(double)));
}

struct SStringWriter : pugi::xml_writer {
    std::string text;
    void write(const void* data, size_t size) override { text.append(static_cast<const char*>(data), size); }
};

} // namespace

CRCalFile::CRCalFile() = default;
CRCalFile::~CRCalFile() = default;
CRCalFile::CRCalFile(const CRCalFile& other) { *this = other; }

CRCalFile& CRCalFile::operator=(const CRCalFile& other)
{
    if (this == &other) return *this;
    for (int i = 0; i < kPresets; ++i) m_presets[i] = other.m_presets[i];
    m_bandStart = other.m_bandStart;
    m_bandEnd = other.m_bandEnd;
    return *this;
}

void CRCalFile::DefaultCal()
{
    for (SPreset& p : m_presets) p = SPreset();
    m_bandStart = 8.0;
    m_bandEnd = 14.0;
}

const CRCalFile::SPreset* CRCalFile::Find(int preset) const
{
    if (preset < 0 || preset >= kPresets || !m_presets[preset].defined) return nullptr;
    return &m_presets[preset];
}

CRCalFile::SPreset* CRCalFile::Touch(int preset)
{
    if (preset < 0 || preset >= kPresets) return nullptr;
    m_presets[preset].defined = true;
    return &m_presets[preset];
}

bool CRCalFile::HasCoefficients() const
{
    for (const SPreset& p : m_presets)
        if (p.defined && p.hasRadiance) return true;
    return false;
}

bool CRCalFile::HasPreset(int preset) const { return Find(preset) != nullptr; }

void CRCalFile::RemovePreset(int preset)
{
    if (preset >= 0 && preset < kPresets) m_presets[preset] = SPreset();
}

// --- queries -----------------------------------------------------------------

bool CRCalFile::GetBandpass(double& start, double& end) const
{
    start = m_bandStart;
    end = m_bandEnd;
    return true;
}

bool CRCalFile::GetPolyOrder(int preset, int& order) const
{
    const SPreset* p = Find(preset);
    order = p && p->hasRadiance ? p->order : 0;
    return p && p->hasRadiance;
}

bool CRCalFile::GetTempPolyOrder(int preset, int& order) const
{
    const SPreset* p = Find(preset);
    order = p ? p->tempOrder : 0;
    return p && p->tempOrder > 0;
}

bool CRCalFile::GetCoefficients(int preset, TArray<double>& coefficients) const
{
    const SPreset* p = Find(preset);
    if (!p || !p->hasRadiance) {
        coefficients.clear();
        return false;
    }
    coefficients = p->coefficients;
    return true;
}

bool CRCalFile::GetTempCoefficients(int preset, TArray<double>& coefficients) const
{
    const SPreset* p = Find(preset);
    if (!p || p->tempOrder <= 0) {
        coefficients.clear();
        return false;
    }
    coefficients = p->tempCoefficients;
    return true;
}

bool CRCalFile::GetLookup(int preset, TArray<double>& radiance, TArray<double>& temperature) const
{
    const SPreset* p = Find(preset);
    if (!p || p->lookupRadiance.empty()) {
        radiance.clear();
        temperature.clear();
        return false;
    }
    radiance = p->lookupRadiance;
    temperature = p->lookupTemperature;
    return true;
}

bool CRCalFile::GetBackgroundType(int preset, BACKGROUND_TYPE& type) const
{
    const SPreset* p = Find(preset);
    type = p ? p->backgroundType : BACKGROUND_NONE;
    return p != nullptr;
}

bool CRCalFile::GetBackgroundValue(int preset, double& value) const
{
    const SPreset* p = Find(preset);
    bool ok = p && p->backgroundType == BACKGROUND_VALUE;
    value = ok ? p->backgroundValue : 0.0;
    return ok;
}

bool CRCalFile::GetBackgroundFile(int preset, unsigned int width, unsigned int height, TArray<double>& image) const
{
    const SPreset* p = Find(preset);
    if (!p || p->backgroundType != BACKGROUND_FILE || p->backgroundWidth != width || p->backgroundHeight != height)
        return false;
    image = p->backgroundImage;
    return true;
}

bool CRCalFile::GetBackgroundFileCRC(int preset, unsigned int width, unsigned int height, unsigned int& crc) const
{
    const SPreset* p = Find(preset);
    if (!p || p->backgroundType != BACKGROUND_FILE || p->backgroundWidth != width || p->backgroundHeight != height)
        return false;
    crc = p->backgroundCRC;
    return true;
}

// --- setters -------------------------------------------------------------------

bool CRCalFile::SetBandpass(double start, double end)
{
    if (!std::isfinite(start) || !std::isfinite(end) || start <= 0 || end <= start) return false;
    m_bandStart = start;
    m_bandEnd = end;
    return true;
}

bool CRCalFile::SetCoefficients(int preset, int order, const TArray<double>& coefficients)
{
    if (preset < 0 || preset >= kPresets || !ValidRadianceOrder(order, coefficients.size()) ||
        !AllFinite(coefficients))
        return false;
    SPreset* p = Touch(preset);
    p->hasRadiance = true;
    p->order = order;
    p->coefficients = coefficients;
    return true;
}

bool CRCalFile::SetTempCoefficients(int preset, int order, const TArray<double>& coefficients)
{
    if (preset < 0 || preset >= kPresets || !ValidTempOrder(order, coefficients.size()) || !AllFinite(coefficients))
        return false;
    SPreset* p = Touch(preset);
    p->tempOrder = order;
    p->tempCoefficients = coefficients;
    return true;
}

bool CRCalFile::SetLookup(int preset, const TArray<double>& radiance, const TArray<double>& temperature)
{
    if (preset < 0 || preset >= kPresets || !ValidLookup(radiance, temperature)) return false;
    SPreset* p = Touch(preset);
    p->lookupRadiance = radiance;
    p->lookupTemperature = temperature;
    return true;
}

bool CRCalFile::SetBackgroundValue(int preset, double value)
{
    if (preset < 0 || preset >= kPresets || !std::isfinite(value)) return false;
    SPreset* p = Touch(preset);
    p->backgroundType = BACKGROUND_VALUE;
    p->backgroundValue = value;
    p->backgroundImage.Destroy();
    p->backgroundWidth = p->backgroundHeight = 0;
    p->backgroundCRC = 0;
    return true;
}

bool CRCalFile::SetBackgroundImage(int preset, unsigned int width, unsigned int height, const TArray<double>& image)
{
    if (preset < 0 || preset >= kPresets || width == 0 || height == 0 || width > kMaxImageSide ||
        height > kMaxImageSide || image.size() != static_cast<size_t>(width) * height || !AllFinite(image))
        return false;
    SPreset* p = Touch(preset);
    p->backgroundType = BACKGROUND_FILE;
    p->backgroundValue = 0;
    p->backgroundWidth = width;
    p->backgroundHeight = height;
    p->backgroundImage = image;
    p->backgroundCRC = ImageCRC(p->backgroundImage);
    return true;
}

bool CRCalFile::ClearBackground(int preset)
{
    if (preset < 0 || preset >= kPresets) return false;
    SPreset& p = m_presets[preset];
    p.backgroundType = BACKGROUND_NONE;
    p.backgroundValue = 0;
    p.backgroundImage.Destroy();
    p.backgroundWidth = p.backgroundHeight = 0;
    p.backgroundCRC = 0;
    return true;
}

// --- XML -------------------------------------------------------------------------

namespace {

// Reads one <preset> element into a calibration's setters.
bool ReadPreset(const pugi::xml_node& node, int index, CRCalFile& cal)
{
    for (pugi::xml_node child : node.children()) {
        if (child.type() != pugi::node_element) continue;
        const char* name = child.name();
        if (std::strcmp(name, "radiance") == 0) {
            long long order = 0;
            if (!ParseInt(child.attribute("order").value(), -2, CRCalFile::kMaxOrder, order)) return false;
            size_t count = order < 0 ? 2 : static_cast<size_t>(order == 0 ? 0 : order + 1);
            TArray<double> c;
            if (!ParseList(child.child_value(), count, c) || !cal.SetCoefficients(index, static_cast<int>(order), c))
                return false;
        } else if (std::strcmp(name, "temperature") == 0) {
            long long order = 0;
            if (!ParseInt(child.attribute("order").value(), 1, CRCalFile::kMaxOrder, order)) return false;
            TArray<double> c;
            if (!ParseList(child.child_value(), static_cast<size_t>(order) + 1, c) ||
                !cal.SetTempCoefficients(index, static_cast<int>(order), c))
                return false;
        } else if (std::strcmp(name, "lookup") == 0) {
            TArray<double> radiance, temperature;
            for (pugi::xml_node row : child.children("row")) {
                double r = 0, t = 0;
                if (!ParseNumber(row.attribute("radiance").value(), r) ||
                    !ParseNumber(row.attribute("temperature").value(), t))
                    return false;
                radiance.add(r);
                temperature.add(t);
            }
            if (!cal.SetLookup(index, radiance, temperature)) return false;
        } else if (std::strcmp(name, "background") == 0) {
            const char* type = child.attribute("type").value();
            if (std::strcmp(type, "none") == 0) {
                cal.ClearBackground(index);
            } else if (std::strcmp(type, "value") == 0) {
                double v = 0;
                if (!ParseNumber(child.child_value(), v) || !cal.SetBackgroundValue(index, v)) return false;
            } else if (std::strcmp(type, "image") == 0) {
                long long w = 0, h = 0;
                if (!ParseInt(child.attribute("width").value(), 1, CRCalFile::kMaxImageSide, w) ||
                    !ParseInt(child.attribute("height").value(), 1, CRCalFile::kMaxImageSide, h))
                    return false;
                TArray<double> image;
                if (!ParseList(child.child_value(), static_cast<size_t>(w * h), image) ||
                    !cal.SetBackgroundImage(index, static_cast<unsigned>(w), static_cast<unsigned>(h), image))
                    return false;
                // A stored CRC guards the numbers against damage; a hand-written
                // file may leave it out.
                if (pugi::xml_attribute crcAttr = child.attribute("crc")) {
                    long long crc = 0;
                    const char* text = crcAttr.value();
                    const char* end = text + std::strlen(text);
                    auto [next, ec] = std::from_chars(text, end, crc, 16);
                    unsigned int stored = 0;
                    if (ec != std::errc() || next != end || crc < 0 || crc > 0xFFFFFFFFll ||
                        !cal.GetBackgroundFileCRC(index, static_cast<unsigned>(w), static_cast<unsigned>(h), stored) ||
                        stored != static_cast<unsigned int>(crc))
                        return false;
                }
            } else {
                return false;
            }
        } else {
            return false; // an unknown element is more likely a typo than an extension
        }
    }
    return true;
}

} // namespace

bool CRCalFile::FromXML(const char* text, size_t length)
{
    if (!text) return false;
    pugi::xml_document doc;
    // No DOCTYPE processing: pugixml never expands external or custom entities.
    if (!doc.load_buffer(text, length, pugi::parse_default, pugi::encoding_utf8)) return false;
    pugi::xml_node root = doc.document_element();
    if (std::strcmp(root.name(), kRoot) != 0) return false;
    long long major = 0;
    {
        const char* v = root.attribute("version").value();
        const char* dot = std::strchr(v, '.');
        CString head = dot ? CString(v, static_cast<int>(dot - v)) : CString(v);
        if (!ParseInt(head.c_str(), 1, 1, major)) return false;
    }

    CRCalFile cal;
    cal.DefaultCal();
    if (pugi::xml_node band = root.child("bandpass")) {
        double start = 0, end = 0;
        if (!ParseNumber(band.attribute("start").value(), start) || !ParseNumber(band.attribute("end").value(), end) ||
            !cal.SetBandpass(start, end))
            return false;
    }

    // Presets with an index first; one without an index then serves every
    // preset that is not given.
    pugi::xml_node common;
    bool given[kPresets] = {};
    for (pugi::xml_node node : root.children()) {
        if (node.type() != pugi::node_element) continue;
        if (std::strcmp(node.name(), "bandpass") == 0) continue;
        if (std::strcmp(node.name(), "preset") != 0) return false;
        pugi::xml_attribute index = node.attribute("index");
        if (!index) {
            if (common) return false;
            common = node;
            continue;
        }
        long long i = 0;
        if (!ParseInt(index.value(), 0, kPresets - 1, i) || given[i]) return false;
        given[i] = true;
        cal.Touch(static_cast<int>(i));
        if (!ReadPreset(node, static_cast<int>(i), cal)) return false;
    }
    if (common) {
        for (int i = 0; i < kPresets; ++i) {
            if (given[i]) continue;
            cal.Touch(i);
            if (!ReadPreset(common, i, cal)) return false;
        }
    }
    *this = cal;
    return true;
}

CString CRCalFile::ToXML() const
{
    pugi::xml_document doc;
    pugi::xml_node decl = doc.append_child(pugi::node_declaration);
    decl.append_attribute("version") = "1.0";
    decl.append_attribute("encoding") = "UTF-8";
    pugi::xml_node root = doc.append_child(kRoot);
    root.append_attribute("version") = kFormatVersion;
    pugi::xml_node band = root.append_child("bandpass");
    band.append_attribute("start") = FormatDouble(m_bandStart).c_str();
    band.append_attribute("end") = FormatDouble(m_bandEnd).c_str();

    for (int i = 0; i < kPresets; ++i) {
        const SPreset& p = m_presets[i];
        if (!p.defined) continue;
        pugi::xml_node node = root.append_child("preset");
        node.append_attribute("index") = i;
        if (p.hasRadiance) {
            pugi::xml_node r = node.append_child("radiance");
            r.append_attribute("order") = p.order;
            r.text() = FormatList(p.coefficients, 0).c_str();
        }
        if (p.tempOrder > 0) {
            pugi::xml_node t = node.append_child("temperature");
            t.append_attribute("order") = p.tempOrder;
            t.text() = FormatList(p.tempCoefficients, 0).c_str();
        }
        if (!p.lookupRadiance.empty()) {
            pugi::xml_node l = node.append_child("lookup");
            for (size_t k = 0; k < p.lookupRadiance.size(); ++k) {
                pugi::xml_node row = l.append_child("row");
                row.append_attribute("radiance") = FormatDouble(p.lookupRadiance.get(k)).c_str();
                row.append_attribute("temperature") = FormatDouble(p.lookupTemperature.get(k)).c_str();
            }
        }
        if (p.backgroundType == BACKGROUND_VALUE) {
            pugi::xml_node b = node.append_child("background");
            b.append_attribute("type") = "value";
            b.text() = FormatDouble(p.backgroundValue).c_str();
        } else if (p.backgroundType == BACKGROUND_FILE) {
            pugi::xml_node b = node.append_child("background");
            b.append_attribute("type") = "image";
            b.append_attribute("width") = p.backgroundWidth;
            b.append_attribute("height") = p.backgroundHeight;
            char crc[16];
            std::snprintf(crc, sizeof crc, "%08X", p.backgroundCRC);
            b.append_attribute("crc") = crc;
            // One image row per line keeps the file readable.
            std::string numbers(1, '\n');
            numbers.append(FormatList(p.backgroundImage, p.backgroundWidth));
            numbers.push_back('\n');
            b.text() = numbers.c_str();
        }
    }
    SStringWriter writer;
    doc.save(writer, "  ", pugi::format_default, pugi::encoding_utf8);
    return CString(std::string_view(writer.text));
}

bool CRCalFile::Load(TSharedPtr<IFile> file, unsigned int flags)
{
    if (!file) return false;
    uint64_t length = 0;
    if (flags & kPlainXML) {
        length = file->GetRemaining();
    } else {
        uint32_t stored = 0;
        if (!file->GetUInt32(stored)) return false;
        length = stored;
    }
    // A length beyond the stream is corrupt: refuse it before allocating.
    if (length > file->GetRemaining() || length > 0xFFFFFFFFu) return false;
    TArray<char> text;
    text.resize(static_cast<size_t>(length));
    if (length && !file->ReadBytes(text.data(), static_cast<unsigned int>(length))) return false;
    return FromXML(text.data() ? text.data() : "", static_cast<size_t>(length));
}

bool CRCalFile::Save(TSharedPtr<IFile> file, unsigned int flags)
{
    if (!file) return false;
    CString xml = ToXML();
    if (xml.length() > 0xFFFFFFFFu) return false;
    const auto length = static_cast<uint32_t>(xml.length());
    if (!(flags & kPlainXML) && !file->PutUInt32(length)) return false;
    return file->WriteBytes(xml.c_str(), length);
}

} // namespace orv
