// The driver's options page and the settings it edits.
// Unfinished: the page is not shown yet; Notify already re-reads nothing.
#include "zbuffer/izb.h"

bool IZB::ShowOptions(q5_HWND) {
    return false;
}
std::int32_t IZB::Notify(std::int32_t) {
    return 0;
}
