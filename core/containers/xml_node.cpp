// A minimal XML element and its text form.
#include "core/containers/xml_node.h"

#include "core/services/text_convert.h"

#include <new>

namespace {

std::string Escaped(const std::u16string& text) {
    const std::string utf8 = WideToUtf8(text.c_str());
    std::string out;
    for (char c : utf8) {
        switch (c) {
        case '&':
            out += "&amp;";
            break;
        case '<':
            out += "&lt;";
            break;
        case '>':
            out += "&gt;";
            break;
        case '"':
            out += "&quot;";
            break;
        default:
            out += c;
        }
    }
    return out;
}

} // namespace

q5_XMLNODE* q5_XMLNODE::AddChild(const q5_WCHAR* name) {
    auto* child = new (std::nothrow) q5_XMLNODE(name);
    if (child != nullptr) children_.emplace_back(child);
    return child;
}

void q5_XMLNODE::SetAttribute(const q5_WCHAR* name, const q5_WCHAR* value) {
    if (name == nullptr) return;
    const std::u16string v = value != nullptr ? value : u"";
    for (auto& attribute : attributes_) {
        if (attribute.first == name) {
            attribute.second = v;
            return;
        }
    }
    attributes_.emplace_back(name, v);
}

const q5_WCHAR* q5_XMLNODE::GetAttribute(const q5_WCHAR* name) const {
    for (const auto& attribute : attributes_)
        if (name != nullptr && attribute.first == name) return attribute.second.c_str();
    return nullptr;
}

q5_XMLNODE* q5_XMLNODE::Child(std::size_t index) const {
    return index < children_.size() ? children_[index].get() : nullptr;
}

q5_XMLNODE* q5_XMLNODE::FindChild(const q5_WCHAR* name) const {
    for (const auto& child : children_)
        if (name != nullptr && child->name_ == name) return child.get();
    return nullptr;
}

std::string q5_XMLNODE::ToXml() const {
    std::string out;
    Write(out);
    return out;
}

void q5_XMLNODE::Write(std::string& out) const {
    const std::string name = Escaped(name_);
    out += "<" + name;
    for (const auto& [key, value] : attributes_)
        out += " " + Escaped(key) + "=\"" + Escaped(value) + "\"";
    if (text_.empty() && children_.empty()) {
        out += "/>";
        return;
    }
    out += ">" + Escaped(text_);
    for (const auto& child : children_) child->Write(out);
    out += "</" + name + ">";
}
