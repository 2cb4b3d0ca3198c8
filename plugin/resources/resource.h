// Ids of the module's dialog and its controls, shared by the code and the resource script.
#pragma once

#define IDD_ZB_OPTIONS 106
#define IDC_ZB_USE2THREAD 2114
#define IDC_ZB_REFINE 2115
#define IDC_ZB_HQ 2116
#define IDC_ZB_HQTRI 212
#define IDC_ZB_HQTRI_SPIN 214
