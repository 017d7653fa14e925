#pragma once
// CXMLFile: a small XML document model for the files the library writes and
// reads (region lists, calibration side files). A document is a tree of
// CNode elements, each with a name, attributes in their order, text and
// child elements; the file keeps a "current" node for navigation.
//
// Ownership, the one rule to know:
//  - Every CNode is made with new. A node that has not been inserted belongs
//    to whoever made it.
//  - CXMLFile::Insert and CNode::InsertChild take ownership of a node that
//    is free (not yet in a tree, though it may have children of its own).
//    From then on its parent, or the file, deletes it. They refuse, take
//    nothing and return null when the node is null, already has a parent or
//    is a file's root, or would become its own descendant.
//  - Deleting a node deletes its whole subtree and first unlinks it from its
//    parent or file, so `delete` of an inserted node is safe too; a file
//    whose current node goes with it moves its current node to the deleted
//    node's parent.
//  - Pointers returned by FindFirst, GetCurr, FindChild, FindNext ... are
//    borrowed: valid while the node is in its tree.
//
// Reading keeps elements, attributes and text (character data and CDATA of
// an element, joined); comments, processing instructions and the document
// type are dropped. Entities of a document type are never expanded. Names
// compare with exact case.
#include "orv/Array.h"
#include "orv/File.h"
#include "orv/SharedPtr.h"
#include "orv/String.h"

namespace orv {

class CXMLFile {
public:
    // The attributes of an element, in document order; names are unique.
    class CAttribArray {
    public:
        bool Exists(const char* name) const { return Find(name) >= 0; }
        // The value, or an empty string when the attribute is missing.
        const CString& operator[](const char* name) const;
        // Replaces the value of an existing attribute, or appends a new one.
        void Set(const CString& name, const CString& value);
        bool Remove(const char* name);
        void clear() { m_items.clear(); }
        size_t size() const { return m_items.size(); }
        const SNameValuePair& at(size_t index) const { return m_items[index]; }
        // Index of the attribute, -1 when missing.
        long Find(const char* name) const;

    private:
        TArray<SNameValuePair> m_items;
    };

    class CNode {
    public:
        explicit CNode(const CString& name);
        // Attributes in the array's order; of repeated names the last wins.
        CNode(const CString& name, const TArray<SNameValuePair>& attributes);
        ~CNode();
        CNode(const CNode&) = delete;
        CNode& operator=(const CNode&) = delete;

        const CString& GetName() const { return m_name; }
        void SetName(const CString& name) { m_name = name; }
        // Character data directly inside the element.
        const CString& GetText() const { return m_text; }
        void SetText(const CString& text) { m_text = text; }

        CAttribArray& GetAttributes() { return m_attributes; }
        const CAttribArray& GetAttributes() const { return m_attributes; }
        // The attribute's value; "" or fallback when it is missing.
        CString GetAttribute(const char* name) const;
        CString GetAttribute(const char* name, CString fallback) const;
        void SetAttribute(const CString& name, const CString& value) { m_attributes.Set(name, value); }

        // First child element with that name (any name for null or ""), or null.
        CNode* FindChild(const char* name) const;
        // The next sibling after this node with that name (any for null or
        // ""), or null: `for (n = p->FindChild("roi"); n; n = n->FindNext("roi"))`.
        CNode* FindNext(const char* name) const;

        CNode* GetParent() const { return m_parent; }
        CNode* FirstChild() const { return m_first; }
        CNode* NextSibling() const { return m_next; }
        size_t ChildCount() const;

        // Takes ownership of a free node (see the rule above) and adds it as
        // the last child (atEnd) or the first. Returns child, or null when
        // refused.
        CNode* InsertChild(CNode* child, bool atEnd = true);
        // Deletes a child of this node with its subtree; false if it is not one.
        bool RemoveChild(CNode* child);

    private:
        friend class CXMLFile;
        bool IsFree() const { return !m_parent && !m_file; }
        void Link(CNode* child, bool atEnd);
        void Unlink(CNode* child);

        CString m_name;
        CString m_text;
        CAttribArray m_attributes;
        CNode* m_parent = nullptr;
        CNode* m_first = nullptr;
        CNode* m_last = nullptr;
        CNode* m_prev = nullptr;
        CNode* m_next = nullptr;
        CXMLFile* m_file = nullptr; // set on the root of a file only
    };

    CXMLFile();
    ~CXMLFile();
    CXMLFile(const CXMLFile&) = delete;
    CXMLFile& operator=(const CXMLFile&) = delete;

    // Reads a document from the file's position to its end and makes its root
    // current. False (and the document unchanged) for a null file, malformed
    // XML, or a document without exactly one root element.
    bool Load(TSharedPtr<IFile> file);
    // Writes the document, UTF-8 with a declaration and indented, at the
    // file's position. False for a null file, an empty document, a name that
    // is not an XML name, or a failed write.
    bool Save(TSharedPtr<IFile> file) const;

    // The first element with that name in document order, the root first;
    // it becomes current. Null (current unchanged) when there is none.
    CNode* FindFirst(const char* name);
    // The current node: the root after Load or the first Insert, null for an
    // empty document.
    CNode* GetCurr() const { return m_curr; }
    // Makes a node of this document current; false for any other node.
    bool SetCurr(CNode* node);
    CNode* GetRoot() const { return m_root; }

    // Takes ownership of a free node: in an empty document it becomes the
    // root, otherwise the last child of the current node. With makeCurrent it
    // becomes the current node, so that the next Insert goes inside it.
    // Returns node, or null when refused (nothing taken).
    CNode* Insert(CNode* node, bool makeCurrent);

    // Deletes every node.
    void Clear();

private:
    friend class CNode;
    CNode* m_root = nullptr;
    CNode* m_curr = nullptr;
};

} // namespace orv
