// A host built against the installed package: core math and strings from Tessera::core, and
// the driver module loaded at run time through Q5DLLFunc.
#include <cstdio>

#include "core/math/matrix3d.h"
#include "core/platform/module.h"
#include "interface/plugin_entry.h"

int main() {
    MATRIX3D m;
    m.SetTranslate(POINT3D(1.0f, 2.0f, 3.0f));
    MATRIX3D inverse;
    inverse.Invert(m);
    MATRIX3D product;
    product.SetMul(m, inverse);
    if (!product.IsIdentity(1e-12)) return 2;

    q5_HINSTANCE module = q5plat::LoadLibraryA(TESSERA_MODULE, 0);
    if (module == nullptr) return 3;
    auto entry = reinterpret_cast<q5_DLLFUNC>(q5plat::GetProcAddress(module, "Q5DLLFunc"));
    if (entry == nullptr) return 4;
    q5_WCHAR version[16] = {};
    if (entry(PLUGIN_MSG_INTERFACE_VERSION, 0, 0, 0) != 145) return 5;
    if (entry(PLUGIN_MSG_VERSION, reinterpret_cast<std::int64_t>(version), 0, 16) != 1) return 6;
    std::printf("tiny host: interface 145, module ");
    for (const q5_WCHAR* c = version; *c != 0; ++c) std::putchar(static_cast<char>(*c));
    std::printf("\n");
    q5plat::FreeLibrary(module);
    return 0;
}
