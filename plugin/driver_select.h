// Host-side selection of the render driver by name, with fallback to the built-in one.
#pragma once

class DRIVER3D;

// Name under which the software Z-buffer driver registers and is created.
inline constexpr const char* kZBufferDriverName = "Tessera K (Z Buffer)";

bool ChooseDriver(DRIVER3D** holder, const char* name);
bool RemoveDriver(DRIVER3D*& holder, bool notify);
