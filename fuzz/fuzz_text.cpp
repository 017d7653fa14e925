// The readers of user text: date and time, numbers, Booleans, GUIDs, and the
// date format language. Text that parses must print back to text that parses
// to the same value.
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <string>

#include "fuzz/FuzzInput.h"
#include "orv/Convert.h"
#include "orv/DateTime.h"
#include "orv/String.h"

using namespace orv;

namespace {

[[noreturn]] void Fail(const char* what, const std::string& text)
{
    std::fprintf(stderr, "%s: \"%s\"\n", what, text.c_str());
    std::abort();
}

template <class C, class T>
void Number(const std::string& text)
{
    T value{};
    C::Parse(text.c_str());
    if (!C::Parse(text.c_str(), value)) return;
    if constexpr (std::is_floating_point_v<T>)
        if (std::isnan(value)) return;
    T back{};
    const CString printed = C::ToString(value);
    if (!C::Parse(printed.c_str(), back) || !(back == value)) Fail("a parsed number does not print back", text);
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size)
{
    fuzz::CReader reader(data, size);
    const uint8_t pick = reader.Take<uint8_t>();
    const std::string text(reinterpret_cast<const char*>(reader.data()), reader.size());

    switch (pick % 4) {
    case 0: {
        CDateTime time;
        if (!time.Set(CString(text.c_str()))) break;
        time.ToStruct();
        CDateTime back;
        if (!back.Set(time.Format()) || !(back == time)) Fail("a parsed time does not print back", text);
        break;
    }
    case 1: {
        // Eight bytes of ticks, then a format.
        fuzz::CReader rest(reader.data(), reader.size());
        const CDateTime time = CDateTime::FromTicks(rest.Take<int64_t>());
        const std::string format(reinterpret_cast<const char*>(rest.data()), rest.size());
        time.Format(format.c_str());
        time.ToStruct();
        break;
    }
    case 2: {
        Number<CInt32, int32_t>(text);
        Number<CUInt8, uint8_t>(text);
        Number<CUInt16, uint16_t>(text);
        Number<CUInt32, uint32_t>(text);
        Number<CUInt64, uint64_t>(text);
        Number<CFlt32, float>(text);
        Number<CFlt64, double>(text);
        uint8_t byte = 0;
        CUInt8::ParseHex(text.c_str(), byte);
        bool flag = false;
        CBool::Parse(text.c_str(), flag);
        break;
    }
    default: {
        SGuid id{};
        if (ParseGuid(text.c_str(), id)) {
            SGuid back{};
            if (!ParseGuid(GuidToString(id).c_str(), back) || !(back == id)) Fail("a parsed GUID does not print back", text);
        }
        CVariant variant(text.c_str());
        variant.ToBool();
        variant.ToInt8();
        variant.ToUInt64();
        variant.ToInt64();
        variant.ToFlt32();
        variant.ToFlt64();
        break;
    }
    }
    return 0;
}
