#pragma once
// CTLKFilterRV and CTLKFilterMX: frames of the TLK camera family. A frame is
// (height + 1) rows of width unsigned 16-bit values: the first row holds the
// 126-byte camera header (TLKHeader.h), the image follows from byte
// width * 2. Both variants share the header; they name some of its fields
// differently, and the MX variant adds the lens block's telemetry and a
// "RecordStart" trigger.
//
// Known types: pixelGrayscale, the variant's pixel type and its stored
// header type (exact comparison).
//
// The header is never read past frameSize: fields beyond the end read as
// zero in ParseFrame (a stored 96-byte header has no lens block), and the
// cheap peeks fail when the field they read is not in the frame.
#include <cstdint>

#include "orv/PixelType.h"
#include "reduce/filters/NamedFilter.h"
#include "reduce/filters/PixelTypes.h"
#include "reduce/filters/TLKHeader.h"

namespace orv::reduce {

class CFrameInfoExtra;

class CTLKFilter : public IFilter {
public:
    bool HasPixels(SGuid pixelType) const override;
    // The image inside the frame: frame + width * 2, stride width * 2, for a
    // frame that holds all height + 1 rows.
    bool GetPixels(unsigned char* frame, SGuid pixelType, uint16_t width, uint16_t height, uint32_t frameSize,
                   void** pixels, int& stride) override;

    // Fills the frame info of the header's preset with the header's counter,
    // IRIG time and extra entries, and copies the image when pixels.data is
    // set: unsigned 16-bit (types 2 or 3), min(frameSize - width * 2,
    // height * width * 2) bytes.
    bool ParseFrame(unsigned char* frame, SGuid pixelType, uint16_t width, uint16_t height, uint32_t frameSize,
                    STypedData pixels, CReduceObjectArray& objects, uint8_t& preset) override;
    bool ParsePreset(unsigned char* frame, SGuid pixelType, uint16_t width, uint16_t height, uint32_t frameSize,
                     uint8_t& preset) override;
    bool ParseTime(unsigned char* frame, SGuid pixelType, uint16_t width, uint16_t height, uint32_t frameSize,
                   CDateTime& time) override;
    bool ParseFrameCounter(unsigned char* frame, SGuid pixelType, uint16_t width, uint16_t height,
                           uint32_t frameSize, uint64_t& counter) override;
    bool ParseBasicInfo(unsigned char* frame, SGuid pixelType, uint16_t width, uint16_t height, uint32_t frameSize,
                        uint8_t& preset, uint64_t& counter, CDateTime& time) override;

    // Field 0: the trigger bit; for MX, field 1: the record start bit.
    // Frames shorter than the header fail.
    bool CheckForTrigger(const unsigned char* frame, uint32_t frameSize, SGuid pixelType, uint16_t width,
                         uint16_t height, uint16_t subFrameIndex, uint8_t field, bool& triggered,
                         uint16_t& position) override;
    bool HasTime(SGuid) const override { return true; }
    bool HasFrameCounter(SGuid) const override { return true; }
    uint64_t FrameCounterMaxValue(SGuid) const override { return 4294967295u; }
    bool GetTriggerFields(SGuid pixelType, TArray<CString>& names) const override;

    // For the variant's pixel type only: the stored header is the first
    // width * 2 bytes for a width below 48, else 96.
    bool HasHeader(SGuid pixelType) const override;
    bool GetHeaderInfo(SGuid pixelType, uint16_t width, uint16_t height, uint32_t frameSize, SGuid& headerType,
                       uint32_t& headerSize) const override;
    bool ExtractHeader(unsigned char* frame, SGuid pixelType, uint16_t width, uint16_t height, uint32_t frameSize,
                       void* out, uint32_t outSize) override;

protected:
    CTLKFilter(SGuid pixelType, SGuid headerType, bool mx)
        : m_pixelType(pixelType), m_headerType(headerType), m_mx(mx)
    {
    }
    bool Known(SGuid type) const { return type == pixelGrayscale || type == m_pixelType || type == m_headerType; }

    SGuid m_pixelType;
    SGuid m_headerType;
    bool m_mx;
};

class CTLKFilterRV : public TNamedFilter<CTLKFilterRV, CTLKFilter> {
public:
    static constexpr const char* kName = "TLK-RV";
    static constexpr SGuid kPixelTypes[] = {guidTLKRV, guidTLKRVHdr};
    CTLKFilterRV() : TNamedFilter(guidTLKRV, guidTLKRVHdr, false) {}
};

class CTLKFilterMX : public TNamedFilter<CTLKFilterMX, CTLKFilter> {
public:
    static constexpr const char* kName = "TLK-MX";
    static constexpr SGuid kPixelTypes[] = {guidTLKMX, guidTLKMXHdr};
    CTLKFilterMX() : TNamedFilter(guidTLKMX, guidTLKMXHdr, true) {}
};

// The extra entries of a decoded header in the variant's order (TLKEntries.cpp),
// and for MX the lens block's entries and the field of view its focal length
// gives. Leaves extra as clearing it and adding each entry would.
void tlkFillEntries(CFrameInfoExtra& extra, const SHeader& header, const SRawHeader& raw, bool mx,
                    CReduceObjectArray& objects);

} // namespace orv::reduce
