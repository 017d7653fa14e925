#include "orv/Path.h"

#include <string_view>

namespace orv::path {

namespace {

// Index of the first character of the file name.
size_t NameStart(std::string_view p)
{
    size_t slash = p.rfind('/');
    return slash == std::string_view::npos ? 0 : slash + 1;
}

// Index of the extension's dot, or npos. Dots that only lead the name
// (".profile", "..") do not start an extension.
size_t ExtensionStart(std::string_view p)
{
    size_t name = NameStart(p);
    std::string_view n = p.substr(name);
    size_t dot = n.rfind('.');
    if (dot == std::string_view::npos) return dot;
    size_t firstOther = n.find_first_not_of('.');
    if (firstOther == std::string_view::npos || firstOther > dot) return std::string_view::npos;
    return name + dot;
}

CString Make(std::string_view s) { return CString(s.data(), static_cast<int>(s.size())); }

} // namespace

CString GetDirectory(const CString& path)
{
    std::string_view p = path.view();
    size_t slash = p.rfind('/');
    if (slash == std::string_view::npos) return CString();
    // Collapse a run of separators before the name ("a//b" is in "a").
    size_t end = slash;
    while (end > 0 && p[end - 1] == '/') --end;
    if (end == 0) return CString("/");
    return Make(p.substr(0, end));
}

CString GetExtension(const CString& path)
{
    std::string_view p = path.view();
    size_t dot = ExtensionStart(p);
    return dot == std::string_view::npos ? CString() : Make(p.substr(dot));
}

CString ChangeExtension(const CString& path, const CString& extension)
{
    std::string_view p = path.view();
    size_t dot = ExtensionStart(p);
    std::string_view stem = dot == std::string_view::npos ? p : p.substr(0, dot);
    std::string_view ext = extension.view();
    CString result = Make(stem);
    if (ext.empty()) return result;
    if (ext[0] != '.') result += ".";
    return result + Make(ext);
}

CString GetFileName(const CString& path)
{
    std::string_view p = path.view();
    return Make(p.substr(NameStart(p)));
}

CString Combine(const CString& directory, const CString& name)
{
    std::string_view d = directory.view(), n = name.view();
    if (d.empty()) return name;
    if (n.empty()) return directory;
    while (d.size() > 1 && d.back() == '/') d.remove_suffix(1);
    while (!n.empty() && n.front() == '/') n.remove_prefix(1);
    CString result = Make(d);
    if (d.back() != '/') result += "/";
    return result + Make(n);
}

} // namespace orv::path
