#pragma once
// CRCalFile: a user calibration, per preset: the counts-to-radiance
// polynomial with its background, and the radiance-to-temperature step as a
// polynomial, a look-up table or Planck's law over the bandpass. Its stored
// form is an XML document that a person can write by hand (docs/formats.md).
#include <cstddef>
#include <cstdint>

#include "orv/Array.h"
#include "orv/File.h"
#include "orv/SharedPtr.h"
#include "orv/String.h"

namespace orv {

class CRCalFile {
public:
    enum BACKGROUND_TYPE : int {
        BACKGROUND_NONE = 0,
        BACKGROUND_VALUE = 2, // one background signal for every pixel
        BACKGROUND_FILE = 3,  // a background signal per pixel, an image
    };
    static constexpr int kPresets = 8;
    // Load and Save flag: the stream is the bare XML document up to its end,
    // as in a hand-written file, instead of a length and the text.
    static constexpr unsigned int kPlainXML = 1;
    // Limits a loaded calibration must keep.
    static constexpr int kMaxOrder = 32;
    static constexpr unsigned int kMaxImageSide = 65535;

    CRCalFile();
    ~CRCalFile();
    CRCalFile(const CRCalFile& other);
    CRCalFile& operator=(const CRCalFile& other);

    // Reads a calibration: without kPlainXML an unsigned 32-bit byte count
    // and that many bytes of XML, leaving the stream right after them. On
    // failure the calibration is left as it was.
    bool Load(TSharedPtr<IFile> file, unsigned int flags);
    bool Save(TSharedPtr<IFile> file, unsigned int flags);
    // The same from and to text.
    bool FromXML(const char* text, size_t length);
    CString ToXML() const;

    // No presets; bandpass 8 to 14 micrometres.
    void DefaultCal();
    // True when some preset has a radiance polynomial.
    bool HasCoefficients() const;

    // Wavelength limits in micrometres.
    bool GetBandpass(double& start, double& end) const;
    // Each query answers for one preset; false, with an empty or zero answer,
    // when the preset or that part of it is missing.
    bool GetPolyOrder(int preset, int& order) const;
    bool GetTempPolyOrder(int preset, int& order) const;
    bool GetCoefficients(int preset, TArray<double>& coefficients) const;
    bool GetTempCoefficients(int preset, TArray<double>& coefficients) const;
    bool GetLookup(int preset, TArray<double>& radiance, TArray<double>& temperature) const;
    bool GetBackgroundType(int preset, BACKGROUND_TYPE& type) const;
    bool GetBackgroundValue(int preset, double& value) const;
    // The per-pixel background; false unless its size is width by height.
    bool GetBackgroundFile(int preset, unsigned int width, unsigned int height, TArray<double>& image) const;
    // CRC-32 of the image's doubles as they lie in memory (little-endian).
    bool GetBackgroundFileCRC(int preset, unsigned int width, unsigned int height, unsigned int& crc) const;

    // Building a calibration in code. Each setter checks what Load checks and
    // returns false, changing nothing, for a bad preset or bad values.
    bool SetBandpass(double start, double end);
    // order 0: radiance = counts (no coefficients); 1 to kMaxOrder: order + 1
    // coefficients, constant first; -1, -2: the background forms, c0 and c1.
    bool SetCoefficients(int preset, int order, const TArray<double>& coefficients);
    // order 1 to kMaxOrder with order + 1 coefficients, result in Celsius.
    bool SetTempCoefficients(int preset, int order, const TArray<double>& coefficients);
    // At least two rows, radiance strictly ascending, temperature in Celsius.
    bool SetLookup(int preset, const TArray<double>& radiance, const TArray<double>& temperature);
    bool SetBackgroundValue(int preset, double value);
    bool SetBackgroundImage(int preset, unsigned int width, unsigned int height, const TArray<double>& image);
    bool ClearBackground(int preset);
    bool HasPreset(int preset) const;
    void RemovePreset(int preset);

private:
    struct SPreset {
        bool defined = false;
        bool hasRadiance = false;
        int order = 0;
        TArray<double> coefficients;
        int tempOrder = 0;
        TArray<double> tempCoefficients;
        TArray<double> lookupRadiance;
        TArray<double> lookupTemperature;
        BACKGROUND_TYPE backgroundType = BACKGROUND_NONE;
        double backgroundValue = 0;
        unsigned int backgroundWidth = 0;
        unsigned int backgroundHeight = 0;
        TArray<double> backgroundImage;
        unsigned int backgroundCRC = 0;
    };

    const SPreset* Find(int preset) const;
    SPreset* Touch(int preset);

    SPreset m_presets[kPresets];
    double m_bandStart = 8.0;
    double m_bandEnd = 14.0;
};

} // namespace orv
