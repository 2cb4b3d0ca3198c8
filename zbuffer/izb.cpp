// IZB: construction, identity, queries, parameters and the small state operations.
#include "zbuffer/izb.h"

#include <algorithm>
#include <cstring>

#include "core/services/host_link.h"
#include "core/services/wide_string.h"
#include "interface/gapi.h"
#include "interface/picture.h"
#include "interface/view.h"
#include "zbuffer/raster/line_draw.h"

IZB::IZB(const DriverModule& module) : lineRoutine(DrawLine), module_(module) {
    ReadSettings();
}

void IZB::ReadSettings() {
    if (q5_GAPI* host = q5GetHostAPI()) {
        useTwoThreads = host->GetSettingInt(0, "Render\\ZB\\Use2Thread", 1) != 0;
        refine = host->GetSettingInt(0, "Render\\ZB\\Refine", 1) != 0;
    }
}

void IZB::DeleteThis() {
    DestroySurfacesOnRelease();
    if (backgroundPicture != nullptr) backgroundPicture->Release();
    delete this;
}

const char* IZB::GetInterfaceName() {
    return kZBufferDriverName;
}
std::int32_t IZB::GetInterfaceVersion() {
    return kDriverInterfaceVersion;
}

namespace {
constexpr std::int32_t kParam1001 = 1001;
constexpr std::int32_t kParam1002 = 1002;
constexpr std::int32_t kParam1003 = 1003;

q5_RENDERSETTINGS* ContextSettings(q5_RENDERCONTEXT* context) {
    return context != nullptr && context->view != nullptr ? context->view->RenderSettings()
                                                          : nullptr;
}
} // namespace

std::uint64_t IZB::SetParam(std::int32_t id, std::uint64_t value, q5_VALUETYPE type) {
    switch (id) {
    case kParam1001:
        flag1001_ = value == 0;
        return 1;
    case kParam1002:
        if (q5_RENDERSETTINGS* settings = ContextSettings(renderContext))
            settings->flag1002 = value != 0;
        return 1;
    case kParam1003:
        if (type == Q5_VALUE_FLOATPTR) {
            const auto* source = reinterpret_cast<const float*>(value);
            if (source == nullptr) return 0;
            param1003 = *source;
            return 1;
        }
        if (type == Q5_VALUE_INT) {
            const auto v = static_cast<std::int64_t>(value);
            param1003 = static_cast<float>(std::clamp<std::int64_t>(v, 0, 65535));
            return 1;
        }
        return 0;
    default:
        return 0;
    }
}

std::uint64_t IZB::GetParam(std::int32_t id, std::uint64_t value, q5_VALUETYPE type) {
    switch (id) {
    case kParam1001:
        return flag1001_ ? 0 : 1;
    case kParam1002: {
        const q5_RENDERSETTINGS* settings = ContextSettings(renderContext);
        return settings != nullptr ? settings->flag1002 : 0;
    }
    case kParam1003:
        if (type == Q5_VALUE_FLOATPTR) {
            auto* target = reinterpret_cast<float*>(value);
            if (target == nullptr) return 0;
            *target = param1003;
            return 1;
        }
        // Hands the argument back untouched; hosts rely on it.
        if (type == Q5_VALUE_INT) return value;
        return 0;
    default:
        return 0;
    }
}

std::int32_t IZB::Attach(std::uint64_t window, q5_RENDERCONTEXT* context) {
    attachedId = window;
    renderContext = context;
    progress = context != nullptr ? context->progress : nullptr;
    view = context != nullptr ? context->view : nullptr;
    return 1;
}

std::int32_t IZB::Unnamed12() {
    return 0;
}

std::int64_t IZB::GetValue(std::int32_t id, std::int64_t argument) {
    const SurfaceRecord& s = surface;
    switch (id) {
    case 100:
        return width;
    case 101:
        return height;
    case 102:
        return reinterpret_cast<std::int64_t>(s.colourBits);
    case 103:
        return colourSize;
    case 104:
        return reinterpret_cast<std::int64_t>(s.depth);
    case 105:
        return static_cast<std::int64_t>(s.depthStride) * s.H;
    case 106:
        return s.depthStride;
    case 107:
        // The stride is scaled by 4 once more than bytes need; callers are built around it.
        return reinterpret_cast<std::int64_t>(s.depth) +
               static_cast<std::int64_t>(s.depthStride) * argument * 4;
    case 108:
        flags &= ~kFlagValue108;
        flags |= kFlagQueried108;
        if (argument != 0) flags |= kFlagValue108;
        return 1;
    case 109:
        return flags & kFlagValue108;
    default:
        return 0;
    }
}

std::int64_t IZB::QueryCaps(std::int32_t id) {
    switch (id) {
    case 11:
        if (surface.depth != nullptr && surface.colourBits != nullptr) return 0;
        if (colourSize != 0) return 1;
        return depthEntryCount != 0;
    case 13:
    case 17:
    case 23:
    case 25:
        return 1;
    case 15:
        return useTwoThreads;
    case 16:
        return refine;
    case 18:
        return kLayoutCheck18;
    case 19:
        return kLayoutCheck19;
    case 20:
        return kLayoutCheck20;
    default:
        return 0;
    }
}

bool IZB::GetDriverString(q5_WCHAR* buffer, std::int32_t kind) {
    if (buffer == nullptr) return false;
    buffer[0] = 0;
    std::int32_t id = 0;
    switch (kind) {
    case 1:
        id = 9;
        break;
    case 2:
        id = 8;
        break;
    case 10:
        id = 7;
        break;
    default:
        return true;
    }
    q5wcscpy(buffer, module_.String(id));
    return true;
}

bool IZB::Unnamed17() {
    return true;
}

std::int32_t IZB::SetMatrix(const float* matrix4x4) {
    static constexpr float kIdentity[16] = {1, 0, 0, 0, 0, 1, 0, 0, 0, 0, 1, 0, 0, 0, 0, 1};
    std::memcpy(transform, matrix4x4 != nullptr ? matrix4x4 : kIdentity, sizeof transform);
    return 1;
}

void IZB::DepthOffset(std::uint32_t n) {
    OffsetDepth(raster_, static_cast<std::int32_t>(n));
}

Q5RESULT IZB::SetBkImage(TPicture* picture) {
    if (picture != nullptr) picture->AddRef();
    if (backgroundPicture != nullptr) backgroundPicture->Release();
    backgroundPicture = picture;
    return Q5_OK;
}

std::int32_t IZB::Unnamed28() {
    return 0;
}
std::int32_t IZB::Unnamed29() {
    return 0;
}

void IZB::MarkId(std::uint64_t id) {
    marks_.Mark(id);
}
std::int32_t IZB::IsIdMarked(std::uint64_t id) {
    return marks_.IsMarked(id) ? 1 : 0;
}

std::int32_t IZB::Unnamed35() {
    return Q5_E_NOTAVAIL;
}
std::int32_t IZB::Unnamed36() {
    return 1;
}

void IZB::SetPair(std::uint32_t a, std::uint32_t b) {
    if (pair[0] != a || pair[1] != b) {
        pair[0] = a;
        pair[1] = b;
    }
}

// This driver samples pictures where they lie and keeps no textures of its own, so the texture
// hooks have nothing to make or refresh; the size pair a creating call carries has no reader here.
std::int32_t IZB::TextureHook(TPicture*, std::int32_t, std::int32_t, std::int32_t) {
    return 1;
}
std::int32_t IZB::TextureUpdate(TPicture*, std::int32_t, std::int32_t, std::int32_t, std::int32_t,
                                std::int32_t, std::int32_t) {
    return 1;
}

std::int32_t IZB::SetCopyTarget(TPicture* picture) {
    copyTarget = picture;
    return 1;
}

void IZB::Unnamed56() {}
