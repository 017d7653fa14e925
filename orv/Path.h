#pragma once
// Path text helpers. Paths are POSIX: '/' is the only separator. Nothing here
// touches the file system.
//
// The extension is the part of the file name (the text after the last '/')
// from its last '.' on, dot included: "cal.MXG" has ".MXG", so it compares
// directly with ".mxg". A name whose only dot is its first character
// (".profile") and a name without a dot have no extension; "name." has ".".
#include "orv/String.h"

namespace orv::path {

// Everything before the last '/', without that separator: "a/b/c.txt" gives
// "a/b", "/c.txt" gives "/", "c.txt" gives "" (no directory part).
CString GetDirectory(const CString& path);

// The extension with its dot, or "" when there is none.
CString GetExtension(const CString& path);

// Replaces the extension, or appends one when there is none. extension may be
// given with or without its dot ("mxo" and ".mxo" are the same); an empty
// extension removes the present one. "cal.MXG", ".mxo" gives "cal.mxo".
CString ChangeExtension(const CString& path, const CString& extension);

// The file name: everything after the last '/'.
CString GetFileName(const CString& path);

// Joins a directory and a name with exactly one '/' between them.
CString Combine(const CString& directory, const CString& name);

} // namespace orv::path
