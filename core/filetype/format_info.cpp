// The format information document.
#include "core/filetype/format_info.h"

#include "core/containers/collection.h"
#include "core/containers/xml_node.h"
#include "core/filetype/file_type.h"
#include "core/services/format16.h"
#include "core/services/host_link.h"
#include "core/services/text_convert.h"
#include "interface/gapi.h"

namespace {

bool Describe(q5_XMLNODE& document, const FILETYPE& type) {
    q5_XMLNODE* format = document.AddChild(u"Format");
    q5_XMLNODE* info = format != nullptr ? format->AddChild(u"Info") : nullptr;
    q5_XMLNODE* guid = format != nullptr ? format->AddChild(u"GUID") : nullptr;
    q5_XMLNODE* flags = format != nullptr ? format->AddChild(u"flags") : nullptr;
    if (info == nullptr || guid == nullptr || flags == nullptr) return false;
    q5_WCHAR number[40];
    info->SetText(type.name);
    info->SetAttribute(u"extensions", type.extensions);
    q5sprintf(number, 40, u"%u", type.Kind());
    info->SetAttribute(u"kind", number);
    q5sprintf(number, 40, u"%d", type.icon);
    info->SetAttribute(u"icon", number);
    info->SetAttribute(u"enabled", type.IsEnabled() ? u"1" : u"0");
    info->SetAttribute(u"signature", type.signature != nullptr ? u"1" : u"0");
    char text[40];
    AtoWex(type.id.ToStr(text), number, 40);
    guid->SetText(number);
    q5sprintf(number, 40, u"0x%08X", type.flags);
    flags->SetText(number);
    return true;
}

} // namespace

Q5RESULT QueryFormatInfo(q5_XMLNODE* document, const FTINFO* info) {
    q5_GAPI* host = q5GetHostAPI();
    q5_COLLECTION* types = host != nullptr ? host->GetFileTypes() : nullptr;
    if (document == nullptr) return Q5_E_NOTIMPL;
    Q5RESULT result = Q5_NOTHING;
    for (std::int64_t i = 0; types != nullptr && i < types->Count(); ++i) {
        const auto* type = static_cast<const FILETYPE*>(types->At(i));
        if (info != nullptr && !info->Accepts(*type)) continue;
        if (!Describe(*document, *type)) return Q5_E_NOTIMPL;
        result = Q5_OK;
    }
    return result;
}
