#include "orv/XMLFile.h"

#include <cstring>
#include <pugixml.hpp>
#include <vector>

namespace orv {

using CNode = CXMLFile::CNode;

namespace {

bool NameMatches(const CNode* node, const char* name)
{
    return !name || !*name || node->GetName().Equals(name);
}

// XML 1.0 names, with every non-ASCII byte allowed (UTF-8 letters).
bool IsXmlName(const CString& name)
{
    const unsigned char* s = reinterpret_cast<const unsigned char*>(name.c_str());
    if (!*s) return false;
    auto start = [](unsigned char c) {
        return (c >= 'A' && c <= 'Z') || (c >= 'a' && c <= 'z') || c == '_' || c == ':' || c >= 0x80;
    };
    if (!start(s[0])) return false;
    for (++s; *s; ++s)
        if (!start(*s) && !(*s >= '0' && *s <= '9') && *s != '-' && *s != '.') return false;
    return true;
}

} // namespace

// --- CAttribArray ----------------------------------------------------------------

long CXMLFile::CAttribArray::Find(const char* name) const
{
    if (!name) return -1;
    for (size_t i = 0; i < m_items.size(); ++i)
        if (m_items.get(i).name.Equals(name)) return static_cast<long>(i);
    return -1;
}

const CString& CXMLFile::CAttribArray::operator[](const char* name) const
{
    static const CString empty;
    long i = Find(name);
    return i >= 0 ? m_items.get(static_cast<size_t>(i)).value : empty;
}

void CXMLFile::CAttribArray::Set(const CString& name, const CString& value)
{
    long i = Find(name.c_str());
    if (i >= 0) m_items.get(static_cast<size_t>(i)).value = value;
    else m_items.add(SNameValuePair(name, value));
}

bool CXMLFile::CAttribArray::Remove(const char* name)
{
    long i = Find(name);
    if (i < 0) return false;
    m_items.remove(static_cast<size_t>(i));
    return true;
}

// --- CNode -------------------------------------------------------------------------

CNode::CNode(const CString& name) : m_name(name) {}

CNode::CNode(const CString& name, const TArray<SNameValuePair>& attributes) : m_name(name)
{
    for (const SNameValuePair& a : attributes) m_attributes.Set(a.name, a.value);
}

CNode::~CNode()
{
    // A file whose current node lies in this subtree moves it to our parent.
    const CNode* top = this;
    while (top->m_parent) top = top->m_parent;
    if (CXMLFile* file = top->m_file) {
        for (const CNode* n = file->m_curr; n; n = n->m_parent)
            if (n == this) {
                file->m_curr = m_parent;
                break;
            }
        if (file->m_root == this) file->m_root = nullptr;
        m_file = nullptr;
    }
    if (m_parent) m_parent->Unlink(this);

    // Delete the subtree without recursion, so that a deep document cannot
    // exhaust the stack: a child's own children are moved up behind it
    // before the child goes.
    while (CNode* child = m_first) {
        if (child->m_first) {
            for (CNode* g = child->m_first; g; g = g->m_next) g->m_parent = this;
            child->m_last->m_next = child->m_next;
            if (child->m_next) child->m_next->m_prev = child->m_last;
            else m_last = child->m_last;
            child->m_next = child->m_first;
            child->m_first->m_prev = child;
            child->m_first = child->m_last = nullptr;
        }
        Unlink(child);
        delete child;
    }
}

void CNode::Link(CNode* child, bool atEnd)
{
    child->m_parent = this;
    if (atEnd) {
        child->m_prev = m_last;
        child->m_next = nullptr;
        if (m_last) m_last->m_next = child;
        else m_first = child;
        m_last = child;
    } else {
        child->m_prev = nullptr;
        child->m_next = m_first;
        if (m_first) m_first->m_prev = child;
        else m_last = child;
        m_first = child;
    }
}

void CNode::Unlink(CNode* child)
{
    if (child->m_prev) child->m_prev->m_next = child->m_next;
    else m_first = child->m_next;
    if (child->m_next) child->m_next->m_prev = child->m_prev;
    else m_last = child->m_prev;
    child->m_parent = child->m_prev = child->m_next = nullptr;
}

CString CNode::GetAttribute(const char* name) const { return m_attributes[name]; }

CString CNode::GetAttribute(const char* name, CString fallback) const
{
    long i = m_attributes.Find(name);
    return i >= 0 ? m_attributes.at(static_cast<size_t>(i)).value : fallback;
}

CNode* CNode::FindChild(const char* name) const
{
    for (CNode* c = m_first; c; c = c->m_next)
        if (NameMatches(c, name)) return c;
    return nullptr;
}

CNode* CNode::FindNext(const char* name) const
{
    for (CNode* c = m_next; c; c = c->m_next)
        if (NameMatches(c, name)) return c;
    return nullptr;
}

size_t CNode::ChildCount() const
{
    size_t n = 0;
    for (CNode* c = m_first; c; c = c->m_next) ++n;
    return n;
}

CNode* CNode::InsertChild(CNode* child, bool atEnd)
{
    if (!child || !child->IsFree()) return nullptr;
    // A free node is the top of its own tree; refuse to hang it below itself.
    // A leaf can only be its own ancestor, which keeps building a document
    // linear in its size.
    if (child == this) return nullptr;
    if (child->m_first)
        for (const CNode* n = m_parent; n; n = n->m_parent)
            if (n == child) return nullptr;
    Link(child, atEnd);
    return child;
}

bool CNode::RemoveChild(CNode* child)
{
    if (!child || child->m_parent != this) return false;
    delete child;
    return true;
}

// --- CXMLFile ----------------------------------------------------------------------

CXMLFile::CXMLFile() = default;

CXMLFile::~CXMLFile() { Clear(); }

void CXMLFile::Clear()
{
    CNode* root = m_root;
    m_root = m_curr = nullptr;
    if (root) {
        root->m_file = nullptr;
        delete root;
    }
}

CNode* CXMLFile::Insert(CNode* node, bool makeCurrent)
{
    if (!node || !node->IsFree()) return nullptr;
    if (!m_root) {
        node->m_file = this;
        m_root = node;
    } else {
        m_curr->Link(node, true);
    }
    if (makeCurrent || !m_curr) m_curr = node;
    return node;
}

bool CXMLFile::SetCurr(CNode* node)
{
    if (!node) return false;
    const CNode* top = node;
    while (top->m_parent) top = top->m_parent;
    if (top != m_root || !m_root) return false;
    m_curr = node;
    return true;
}

CNode* CXMLFile::FindFirst(const char* name)
{
    // Pre-order walk over the parent and sibling links.
    CNode* n = m_root;
    while (n) {
        if (NameMatches(n, name)) {
            m_curr = n;
            return n;
        }
        if (n->m_first) {
            n = n->m_first;
            continue;
        }
        while (n && !n->m_next) n = n->m_parent;
        if (n) n = n->m_next;
    }
    return nullptr;
}

namespace {

pugi::xml_node FirstElement(pugi::xml_node n)
{
    for (pugi::xml_node c = n.first_child(); c; c = c.next_sibling())
        if (c.type() == pugi::node_element) return c;
    return pugi::xml_node();
}

pugi::xml_node NextElement(pugi::xml_node n)
{
    for (pugi::xml_node c = n.next_sibling(); c; c = c.next_sibling())
        if (c.type() == pugi::node_element) return c;
    return pugi::xml_node();
}

CNode* MakeNode(pugi::xml_node e)
{
    CNode* node = new CNode(CString(e.name()));
    for (pugi::xml_attribute a : e.attributes()) node->SetAttribute(CString(a.name()), CString(a.value()));
    CString text;
    for (pugi::xml_node c = e.first_child(); c; c = c.next_sibling())
        if (c.type() == pugi::node_pcdata || c.type() == pugi::node_cdata) text += c.value();
    node->SetText(text);
    return node;
}

// Copies the element tree without recursion.
CNode* FromPugi(pugi::xml_node rootElement)
{
    CNode* root = MakeNode(rootElement);
    pugi::xml_node src = rootElement;
    CNode* dst = root;
    for (;;) {
        if (pugi::xml_node c = FirstElement(src)) {
            dst = dst->InsertChild(MakeNode(c), true);
            src = c;
            continue;
        }
        for (;;) {
            if (src == rootElement) return root;
            if (pugi::xml_node s = NextElement(src)) {
                dst = dst->GetParent()->InsertChild(MakeNode(s), true);
                src = s;
                break;
            }
            src = src.parent();
            dst = dst->GetParent();
        }
    }
}

bool FillPugi(const CNode* node, pugi::xml_node target)
{
    if (!IsXmlName(node->GetName())) return false;
    target.set_name(node->GetName().c_str());
    const CXMLFile::CAttribArray& attributes = node->GetAttributes();
    for (size_t i = 0; i < attributes.size(); ++i) {
        const SNameValuePair& a = attributes.at(i);
        if (!IsXmlName(a.name)) return false;
        target.append_attribute(a.name.c_str()).set_value(a.value.c_str());
    }
    if (!node->GetText().empty()) target.append_child(pugi::node_pcdata).set_value(node->GetText().c_str());
    return true;
}

bool ToPugi(const CNode* root, pugi::xml_node parent)
{
    pugi::xml_node dst = parent.append_child(pugi::node_element);
    if (!FillPugi(root, dst)) return false;
    const CNode* src = root;
    for (;;) {
        if (const CNode* c = src->FirstChild()) {
            dst = dst.append_child(pugi::node_element);
            if (!FillPugi(c, dst)) return false;
            src = c;
            continue;
        }
        for (;;) {
            if (src == root) return true;
            if (const CNode* s = src->NextSibling()) {
                dst = dst.parent().append_child(pugi::node_element);
                if (!FillPugi(s, dst)) return false;
                src = s;
                break;
            }
            src = src->GetParent();
            dst = dst.parent();
        }
    }
}

class CFileWriter : public pugi::xml_writer {
public:
    explicit CFileWriter(IFile* file) : m_file(file) {}
    void write(const void* data, size_t size) override
    {
        if (m_ok && m_file->Write(data, size) != size) m_ok = false;
    }
    bool ok() const { return m_ok; }

private:
    IFile* m_file;
    bool m_ok = true;
};

} // namespace

bool CXMLFile::Load(TSharedPtr<IFile> file)
{
    if (!file) return false;
    std::vector<char> bytes;
    char chunk[65536];
    for (;;) {
        unsigned long n = file->Read(chunk, sizeof chunk);
        if (n == 0) break;
        bytes.insert(bytes.end(), chunk, chunk + n);
    }
    pugi::xml_document doc;
    pugi::xml_parse_result result =
        doc.load_buffer(bytes.data(), bytes.size(), pugi::parse_default | pugi::parse_fragment, pugi::encoding_auto);
    if (!result) return false;

    // Exactly one root element, and no text beside it.
    pugi::xml_node rootElement;
    for (pugi::xml_node c = doc.first_child(); c; c = c.next_sibling()) {
        if (c.type() == pugi::node_element) {
            if (rootElement) return false;
            rootElement = c;
        } else if (c.type() == pugi::node_pcdata || c.type() == pugi::node_cdata) {
            return false;
        }
    }
    if (!rootElement) return false;

    CNode* root = FromPugi(rootElement);
    Clear();
    root->m_file = this;
    m_root = m_curr = root;
    return true;
}

bool CXMLFile::Save(TSharedPtr<IFile> file) const
{
    if (!file || !m_root) return false;
    pugi::xml_document doc;
    pugi::xml_node declaration = doc.append_child(pugi::node_declaration);
    declaration.append_attribute("version").set_value("1.0");
    declaration.append_attribute("encoding").set_value("UTF-8");
    if (!ToPugi(m_root, doc)) return false;
    CFileWriter writer(file.get());
    doc.save(writer, "\t", pugi::format_default, pugi::encoding_utf8);
    return writer.ok();
}

} // namespace orv
