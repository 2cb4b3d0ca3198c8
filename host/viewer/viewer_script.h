// Scripts that drive tessera-view as a user would: input events, and commands that read the
// window back, one a line.
#pragma once

#include <string>
#include <vector>

#include "core/platform/window_events.h"

struct ScriptStep {
    enum class Kind {
        Event,   // `event` goes through the window's event queue
        Capture, // the window's pixels as the screen shows them, to PNG file `file`
        Camera,  // prints the camera as tessera-render's options
    };
    Kind kind = Kind::Event;
    q5plat::WindowEvent event;
    std::string file;
    int line = 0;
};

// The lines, '#' starting a note:
//   down|up|dblclick X Y [left|right|middle] [shift] [ctrl] [alt]
//   move X Y [left|right|middle]... [shift] [ctrl] [alt]       (the buttons held)
//   drag X0 Y0 X1 Y1 [left|right|middle] [shift] [ctrl] [alt]  (down, move, up)
//   wheel NOTCHES X Y [shift] [ctrl] [alt]
//   key KEY [shift] [ctrl] [alt]   (a character, or escape enter tab space backspace up down
//                                   left right f1)
//   size W H | minimise | restore | drop FILE... | capture FILE.png | camera | quit
// False with "line N: ..." in `error` on the first line that does not read.
bool ParseViewerScript(const std::string& text, std::vector<ScriptStep>& steps, std::string& error);
