// A minimal XML element, enough for the information documents objects answer: a name,
// attributes, text and child elements, written out as XML text. No parsing, no namespaces.
#pragma once

#include "interface/types.h"

#include <memory>
#include <string>
#include <utility>
#include <vector>

class q5_XMLNODE {
public:
    explicit q5_XMLNODE(const q5_WCHAR* name) : name_(name != nullptr ? name : u"") {}

    // A new last child, owned by this node; null without memory.
    q5_XMLNODE* AddChild(const q5_WCHAR* name);
    void SetText(const q5_WCHAR* text) { text_ = text != nullptr ? text : u""; }
    // Replaces an attribute of the same name.
    void SetAttribute(const q5_WCHAR* name, const q5_WCHAR* value);

    const q5_WCHAR* GetName() const { return name_.c_str(); }
    const q5_WCHAR* GetText() const { return text_.c_str(); }
    // Null when the node has no such attribute.
    const q5_WCHAR* GetAttribute(const q5_WCHAR* name) const;
    std::size_t ChildCount() const { return children_.size(); }
    q5_XMLNODE* Child(std::size_t index) const;
    // The first child of that name, or null.
    q5_XMLNODE* FindChild(const q5_WCHAR* name) const;

    // The element and everything below it as UTF-8, with &, <, > and " escaped.
    std::string ToXml() const;

private:
    void Write(std::string& out) const;

    std::u16string name_;
    std::u16string text_;
    std::vector<std::pair<std::u16string, std::u16string>> attributes_;
    std::vector<std::unique_ptr<q5_XMLNODE>> children_;
};
