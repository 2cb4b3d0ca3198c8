// Default bodies of the driver chain: the closing defaults, the host queries, SetBkImage.
#include "interface/driver.h"

#include "core/services/host_link.h"
#include "interface/gapi.h"
#include "interface/picture.h"
#include "interface/view.h"

bool q5_DRIVER::Unnamed38() {
    return false;
}
void q5_DRIVER::Unnamed39() {}
bool q5_DRIVER::Unnamed40() {
    return false;
}
bool q5_DRIVER::IsWithinLimit() {
    return limit == 0 || counter > 0;
}
bool q5_DRIVER::HasLimitOrCount() {
    return limit != 0 || counter >= 1;
}

namespace {

q5_RENDERSETTINGS* SettingsOf(DRIVER3D* driver) {
    return driver->view != nullptr ? driver->view->RenderSettings() : nullptr;
}

std::int64_t ReportInfo(DRIVER3D*, const char* text) {
    if (q5_GAPI* host = q5GetHostAPI()) host->ReportMessageA(kReportInfo, text);
    return 0;
}

std::int64_t QueryInt(DRIVER3D* self, std::int32_t kind) {
    q5_RENDERSETTINGS* settings = SettingsOf(self);
    switch (kind) {
    case 1:
        return settings != nullptr ? settings->intKind1 : 4096;
    case 3:
        return self->view != nullptr ? self->view->DriverQueryValue() : 0;
    case 4:
        return settings != nullptr ? settings->byteKind4 : 32;
    default:
        return 0;
    }
}

bool QueryBool(DRIVER3D* self, std::int32_t kind) {
    q5_RENDERSETTINGS* settings = SettingsOf(self);
    switch (kind) {
    case 2:
        return settings == nullptr || settings->flagKind2;
    case 8:
        return settings != nullptr && settings->flagKind8;
    case 9:
        return settings != nullptr && settings->flagKind9;
    default:
        return false;
    }
}

// Texture hooks run with the kind-2 flag cleared, as the host expects of a texture upload.
template <typename Call>
void WithFlag2Cleared(DRIVER3D* self, q5_RENDERSETTINGS* settings, Call call) {
    const bool saved = self->boolQueryCallback(self, 2);
    settings->flagKind2 = false;
    call();
    settings->flagKind2 = saved;
}

} // namespace

DRIVER3D::DRIVER3D()
    : messageCallback(ReportInfo), intQueryCallback(QueryInt), boolQueryCallback(QueryBool) {}

Q5RESULT DRIVER3D::SetBkImage(TPicture* picture) {
    q5_RENDERSETTINGS* settings = SettingsOf(this);
    if (settings == nullptr) return Q5_OK;

    if (picture != nullptr && picture == backgroundPicture && picture->width != 0 &&
        picture->height != 0 && picture->bits != nullptr) {
        WithFlag2Cleared(this, settings, [&] {
            TextureUpdate(picture, 0, picture->rectX, picture->rectY, picture->width,
                          picture->height, 1);
        });
        return Q5_OK;
    }

    // Keeps the new picture alive while the old one (possibly the same) is let go.
    if (picture != nullptr) picture->AddRef();

    if (TPicture* old = backgroundPicture) {
        if (--old->useCount == 0)
            WithFlag2Cleared(this, settings, [&] { TextureHook(old, 0, 0, 1); });
        old->Release();
        backgroundPicture = nullptr;
    }
    if (picture == nullptr) return Q5_OK;

    backgroundPicture = picture;
    if (picture->useCount == 0)
        WithFlag2Cleared(this, settings, [&] { TextureHook(picture, 1, 0, 1); });
    ++picture->useCount;
    // The reference taken above is the one the driver keeps.
    return Q5_OK;
}
