// Run-time binding of the DrawDib presentation functions.
#pragma once

// Reads the screen depth and, where the system has it, loads "MSVFW32.DLL" and opens DrawDib.
void BindDrawDib();
// Closes DrawDib and frees the library, but only when a DrawDib handle was opened.
void UnbindDrawDib();
