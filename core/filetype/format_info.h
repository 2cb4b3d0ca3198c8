// The format information document: what the registry knows of each format, as XML nodes.
#pragma once

#include "interface/types.h"

struct FTINFO;
class q5_XMLNODE;

// Appends to `document` one node per registered type, in registry order, enabled or not,
// that passes info's kind and capability filter (every type when info is null):
//   <Format>
//     <Info extensions="jpg,jpeg" kind="2" icon="12" enabled="1" signature="1">name</Info>
//     <GUID>{XXXXXXXX-XXXX-XXXX-XXXX-XXXXXXXXXXXX}</GUID>
//     <flags>0x00004002</flags>
//   </Format>
// 1 when a format was described, 0 when none passed, -4 for a null document or without memory.
Q5RESULT QueryFormatInfo(q5_XMLNODE* document, const FTINFO* info);
