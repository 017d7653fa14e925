#pragma once
// Process-wide registry of pixel types: an identifier, a display name, the
// bytes one pixel takes in a raw frame, the element type it decodes to, and
// the type it derives from. The derivation tree tells a frame decoder which
// family of pixels (grayscale, RGB, YUV) a camera-specific type belongs to.
//
// The library registers the roots below when the registry is first used;
// filters and plug-ins add their own types. All operations are safe to call
// from several threads.
#include "orv/String.h"
#include "orv/Types.h"

namespace orv {

// Roots of the tree, registered by the library itself:
//   pixelRoot       width 0, dtNoData, no base
//   pixelGrayscale  width 2, dtUInt16, base pixelRoot
//   pixelRGB        width 3, dtRGB24,  base pixelRoot
//   pixelRGB48      width 6, dtRGB48,  base pixelRoot
//   pixelYUV        width 2, dtRGB24,  base pixelRoot (4:2:2, decodes to RGB)
constexpr SGuid pixelRoot = MakeGuid("1B6BF263-9221-4B15-B247-D66E664A6170");
constexpr SGuid pixelGrayscale = MakeGuid("6D4A7D67-C5FB-4DE1-9904-E56F067AB126");
constexpr SGuid pixelUInt16 = pixelGrayscale; // one type under two names
constexpr SGuid pixelRGB = MakeGuid("A62531FA-1FB9-4384-A0B5-E88FE59BB9B3");
constexpr SGuid pixelRGB24 = pixelRGB; // one type under two names
constexpr SGuid pixelRGB48 = MakeGuid("23673107-061A-48C7-B247-BC03BD60938A");
constexpr SGuid pixelYUV = MakeGuid("30983C2C-6406-41A5-83DE-C5607B7A23A5");

// Enters a type. The first registration of an identifier wins: registering
// an identifier again returns false and changes nothing. The base need not
// be registered yet (types may arrive in any order); an empty base makes a
// new root. False also for an empty identifier.
bool RegisterPixelType(SGuid id, const CString& name, unsigned char width, EDataType type, SGuid base);

// Bytes per pixel; 0 for an unregistered identifier.
unsigned char PixelWidth(SGuid id);

// True if id is base, or base is reached from id by following the base
// links of registered types. A cycle in the links ends the walk (false).
bool IsPixelBaseType(SGuid id, SGuid base);

bool IsPixelTypeRegistered(SGuid id);
// Name given at registration; empty for an unregistered identifier.
CString PixelTypeName(SGuid id);
// Element type given at registration; dtNoData for an unregistered identifier.
EDataType PixelDataType(SGuid id);
// Direct base; empty for a root or an unregistered identifier.
SGuid PixelBaseType(SGuid id);
// Identifier of the first type registered under name (exact case); false
// and id unchanged when there is none.
bool FindPixelType(const CString& name, SGuid& id);

// Pixel codes of the oldest recording versions, which stored a number
// instead of an identifier:
//   0 -> pixelGrayscale (unsigned 16-bit counts)
//   1 -> pixelRGB       (24-bit RGB)
//   2 -> pixelRGB48     (48-bit RGB)
//   3 -> pixelYUV       (4:2:2 YUV)
// Any other code gives the empty identifier, which no type is registered
// under, so PixelWidth of it is 0.
SGuid OldPixelTypeUInt32ToNewPixelType(unsigned int code);

} // namespace orv
