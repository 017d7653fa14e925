// CXMLFile: a document read from a file to its end. A loaded document that
// saves must load again.
#include <cstdio>
#include <cstdlib>

#include "fuzz/FuzzInput.h"
#include "orv/XMLFile.h"

using namespace orv;

namespace {

size_t Walk(const CXMLFile::CNode* node, int depth)
{
    size_t count = 0;
    for (; node; node = node->NextSibling()) {
        ++count;
        const CXMLFile::CAttribArray& attributes = node->GetAttributes();
        for (size_t i = 0; i < attributes.size(); ++i) attributes[attributes.at(i).name.c_str()];
        if (depth < 64) count += Walk(node->FirstChild(), depth + 1);
    }
    return count;
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size)
{
    fuzz::CInput input(data, size);
    CXMLFile xml;
    if (!xml.Load(input.Open())) return 0;
    Walk(xml.GetCurr(), 0);
    xml.FindFirst("roi");

    CMemFile saved;
    saved.Create();
    TSharedPtr<IFile> file(&saved, noDestroy);
    if (!xml.Save(file)) return 0;
    file->SeekToBegin();
    CXMLFile again;
    if (!again.Load(file)) {
        std::fprintf(stderr, "a saved document does not load\n");
        std::abort();
    }
    return 0;
}
