// The module's localized texts as its drivers read them.
#include "zbuffer/driver_module.h"

#include "core/services/host_link.h"
#include "interface/gapi.h"

const q5_WCHAR* DriverModule::String(std::int32_t id) const {
    q5_GAPI* host = q5GetHostAPI();
    const q5_WCHAR* text = host != nullptr ? host->LGetString(stringTable, id) : nullptr;
    return text != nullptr ? text : u"";
}
