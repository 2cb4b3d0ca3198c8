// The scenes the host builds by itself: the demo and a few small ones for checks.
#pragma once

#include <string>
#include <vector>

class Scene;

// Names in the order --help lists them; the first is the default.
const std::vector<std::string>& BuiltInSceneNames();
// False when there is no built-in scene of that name.
bool BuildBuiltInScene(const std::string& name, Scene& scene);
