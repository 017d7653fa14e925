#pragma once
// The pixel types of the camera families, as one table of data.
//
// Each row is entered into the base library's pixel type tree
// (RegisterPixelType) by the filter that claims it: a filter's Register()
// calls RegisterPixelTypeRows with its own name after it has entered the
// factory, and so picks exactly its rows. Rows that no filter claims (the
// plain tree types such as guidF7M0 that camera types derive from, and
// guidMJPG) are entered by the built-in filter list before any filter
// registers, so that they are in the tree whatever filters a build has.
//
// The figures are the ones recordings were written with, also where they
// look uneven: "V410 BGR (24-bit)" has 2 bytes a pixel against 3 of its base,
// and "Sarnet YUV (UYVY)" data type 3. Both are intended.
#include <cstdint>

#include "orv/PixelType.h"
#include "orv/Types.h"

namespace orv::reduce {

// Plain tree types, claimed by no filter.
inline constexpr SGuid guidF7M0 = MakeGuid("44ACBC8C-03B3-4599-B784-14DAD5C4BBF8");
inline constexpr SGuid guidF7M2 = MakeGuid("F5143BE1-3F5C-46E8-99B7-E5BC2A0A9990");
inline constexpr SGuid guidF7M3 = MakeGuid("6AAAF0FA-3BCF-41A4-842E-EEE17BFA1C00");
inline constexpr SGuid guidUYVY = MakeGuid("BB8A3D05-C4F6-4193-B198-08D9E797E886");
inline constexpr SGuid guidYUY2 = MakeGuid("88DF0B84-7417-41CB-9B49-2F585323D620");
inline constexpr SGuid guidY800 = MakeGuid("327F8ED5-4584-48C7-9FB1-E326376CD4B8");
inline constexpr SGuid guidBGR8 = MakeGuid("5BA4C88B-EBB4-4676-88E4-FC5C0FF6EB36");

// V410 and R7Q.
inline constexpr SGuid guidV410F7M0 = MakeGuid("76ECF27C-7517-49D1-AED0-8C429934409D");
inline constexpr SGuid guidV410FNM0 = MakeGuid("E97ED85F-B45C-409C-B685-0568E493A9D0");
inline constexpr SGuid guidV410GIGE = MakeGuid("3874994E-B76D-45DE-871A-5CF46393B19B");
inline constexpr SGuid guidV410GIGEFlip = MakeGuid("B3E83B04-FC6B-411D-B883-258685C80882");
inline constexpr SGuid guidV410UYVY = MakeGuid("4030E1B1-6E28-4E5C-88F7-16E54AF6A54A");
// Written "DDBF6368-76B6-49F2-V410-6CC47415AFD3": the fourth group is not
// hexadecimal. It is read as every other identifier is, a non-hex digit
// counting 0, so "V4" gives 0x04 and "10" 0x10:
// {DDBF6368-76B6-49F2-0410-6CC47415AFD3}. Intended; this is the value
// recordings of this type carry.
inline constexpr SGuid guidV410YUY2 = MakeGuid("DDBF6368-76B6-49F2-V410-6CC47415AFD3");
inline constexpr SGuid guidV410BGR8 = MakeGuid("036DA1C3-5794-4341-8BC1-5DEEAB52DFD5");
inline constexpr SGuid guidMJLSIR = MakeGuid("ADA2658E-40C0-4C31-9C44-7667B8169FF6");
// Decoded by the V410 filter when asked directly, but claimed by no filter on
// purpose: the factory hands out no filter for it.
inline constexpr SGuid guidMJPG = MakeGuid("BD7EEE6E-81B9-4D4D-A795-D40C99D6D91B");

// Bayer.
inline constexpr SGuid guidBayerGRBG = MakeGuid("7525DAE9-627A-4550-85DC-23B7541AE7CC");
inline constexpr SGuid pixelBayerBG8 = MakeGuid("1C333381-F758-43B8-9530-1BF248CC842B");
inline constexpr SGuid pixelBayerGB8 = MakeGuid("5A5A6837-383B-4D96-8D06-6D53DA214A1C");
inline constexpr SGuid pixelBayerGR8 = MakeGuid("A41BBF48-1DC7-49D5-AC4B-A1467BAFFD4D");
inline constexpr SGuid pixelBayerRG8 = MakeGuid("93377319-02B2-459B-B0BA-C4E04AB83C2F");

// The other camera families.
inline constexpr SGuid guidTLKRV = MakeGuid("B3CC3849-01F1-499C-90E6-4799CE2979FF");
inline constexpr SGuid guidTLKMX = MakeGuid("762A7AEB-B98E-4628-8A7B-7AEE737F7754");
inline constexpr SGuid guidBRG = MakeGuid("1A3CAA37-2D15-4D6D-B4FE-B1FC2332D49A");
inline constexpr SGuid guidSarnetF7M0 = MakeGuid("FD728B9B-9B9B-4098-81E4-73EC59D2505C");
inline constexpr SGuid guidSarnetUYVY = MakeGuid("0612D7F1-A3F5-423B-8A16-F77199066239");
inline constexpr SGuid guidKordan = MakeGuid("AD56BAF5-751A-4328-B058-72B124803183");
inline constexpr SGuid guidMX515F7M2 = MakeGuid("07C06B52-E505-45EA-85F5-73C9E5F0519C");
inline constexpr SGuid guidMX515F7M3 = MakeGuid("B9A7A170-5FEF-4CBC-96E4-E6B84B9F56D7");
inline constexpr SGuid guidMX515UYVY = MakeGuid("4C264D2A-288C-4A7B-A9A4-A9E18695CDFE");
inline constexpr SGuid guidOST = MakeGuid("8C2E0C91-A8D9-47E7-8667-482577F366B4");
inline constexpr SGuid guidVelmar = MakeGuid("7E48B0A6-78A9-44BC-80E8-7888C83854F7");

// Types of a stored camera header (IFilter::GetHeaderInfo). Claimed by their
// filter but not in the pixel type tree.
inline constexpr SGuid guidTLKRVHdr = MakeGuid("ABD16A8F-BB4A-415C-9BC6-7AB387743F25");
inline constexpr SGuid guidTLKMXHdr = MakeGuid("0C784596-B058-4D52-90C3-E995D9175865");
inline constexpr SGuid guidBRGHdr = MakeGuid("E71E484F-1C37-4BB8-B4E2-EBF0727402F9");
inline constexpr SGuid guidOSTHdr = MakeGuid("20DD2639-38C0-4E57-99EE-1B9224F8E5E2");

struct SPixelTypeRow {
    const char* symbol;  // the constant's name, for listings
    const char* name;    // name given to the tree
    SGuid id;
    uint8_t bytes;       // bytes a pixel
    EDataType dataType;
    SGuid base;
    const char* handler; // name of the filter that claims it; null for none
};

// In order of registration.
inline constexpr SPixelTypeRow pixelTypeTable[] = {
    {"guidF7M0", "F7M0", guidF7M0, 2, dtUInt16, pixelGrayscale, nullptr},
    {"guidF7M2", "F7M2", guidF7M2, 2, dtUInt16, pixelGrayscale, nullptr},
    {"guidF7M3", "F7M3", guidF7M3, 2, dtRGB24, pixelRoot, nullptr},
    {"guidUYVY", "UYVY", guidUYVY, 2, dtRGB24, pixelRoot, nullptr},
    {"guidYUY2", "YUY2", guidYUY2, 2, dtRGB24, pixelRoot, nullptr},
    {"guidY800", "Y800", guidY800, 2, dtRGB24, pixelRoot, nullptr},
    {"guidBGR8", "BGR8", guidBGR8, 3, dtRGB24, pixelRoot, nullptr},
    {"guidV410F7M0", "V410 IR (F7M0)", guidV410F7M0, 2, dtUInt16, guidF7M0, "V410"},
    {"guidV410FNM0", "V410 IR (FNM0)", guidV410FNM0, 2, dtUInt16, guidF7M0, "V410"},
    {"guidV410GIGE", "V410 IR (GigE)", guidV410GIGE, 2, dtUInt16, guidF7M0, "V410"},
    {"guidV410GIGEFlip", "V410 IR (GigE, Flipped)", guidV410GIGEFlip, 2, dtUInt16, guidF7M0, "V410"},
    {"guidV410UYVY", "V410 YUV (UYVY)", guidV410UYVY, 2, dtRGB24, guidUYVY, "V410"},
    {"guidV410YUY2", "V410 YUV (YUY2)", guidV410YUY2, 2, dtRGB24, guidYUY2, "V410"},
    {"guidV410BGR8", "V410 BGR (24-bit)", guidV410BGR8, 2, dtRGB24, guidBGR8, "V410"}, // 2 bytes: intended
    {"guidMJLSIR", "R7Q IR (MJLS)", guidMJLSIR, 2, dtUInt16, guidF7M0, "V410"},
    {"guidMJPG", "R7Q Screen (MJPG)", guidMJPG, 3, dtRGB24, pixelRoot, nullptr},
    {"guidBayerGRBG", "BayerGRBG", guidBayerGRBG, 2, dtRGB48, pixelGrayscale, "Bayer"},
    {"pixelBayerBG8", "BayerBG8", pixelBayerBG8, 1, dtRGB24, pixelGrayscale, "Bayer"},
    {"pixelBayerGB8", "BayerGB8", pixelBayerGB8, 1, dtRGB24, pixelGrayscale, "Bayer"},
    {"pixelBayerGR8", "BayerGR8", pixelBayerGR8, 1, dtRGB24, pixelGrayscale, "Bayer"},
    {"pixelBayerRG8", "BayerRG8", pixelBayerRG8, 1, dtRGB24, pixelGrayscale, "Bayer"},
    {"guidTLKRV", "TLK-RV", guidTLKRV, 2, dtUInt16, pixelGrayscale, "TLK-RV"},
    {"guidTLKMX", "TLK-MX", guidTLKMX, 2, dtUInt16, pixelGrayscale, "TLK-MX"},
    {"guidBRG", "BRCF", guidBRG, 2, dtUInt16, pixelGrayscale, "Brennic"},
    {"guidSarnetF7M0", "Sarnet IR (F7M0)", guidSarnetF7M0, 2, dtUInt16, guidF7M0, "Sarnet"},
    {"guidSarnetUYVY", "Sarnet YUV (UYVY)", guidSarnetUYVY, 2, dtUInt16, guidUYVY, "Sarnet"}, // type 3: intended
    {"guidKordan", "Kordan", guidKordan, 2, dtUInt16, pixelGrayscale, "Kordan"},
    {"guidMX515F7M2", "MX515 IR (F7M2)", guidMX515F7M2, 2, dtUInt16, pixelRoot, "MX515"},
    {"guidMX515F7M3", "MX515 Screen (F7M3)", guidMX515F7M3, 2, dtRGB24, pixelRoot, "MX515"},
    {"guidMX515UYVY", "MX515 YUV (UYVY)", guidMX515UYVY, 2, dtRGB24, pixelRoot, "MX515"},
    {"guidOST", "OST", guidOST, 2, dtUInt16, pixelGrayscale, "Ostrel"},
    {"guidVelmar", "Velmar", guidVelmar, 2, dtUInt16, pixelGrayscale, "Velmar"},
};
inline constexpr unsigned kPixelTypeRowCount = sizeof(pixelTypeTable) / sizeof(pixelTypeTable[0]);

// Enters the rows claimed by the filter of that name, in table order; with
// null, the rows that no filter claims. Returns how many were new to the tree
// (a type already there keeps its first registration).
unsigned RegisterPixelTypeRows(const char* handler);

} // namespace orv::reduce
