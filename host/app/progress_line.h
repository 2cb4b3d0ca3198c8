// The render's progress object, and a progress line on standard error for frame sequences,
// shown only when standard error is a terminal (a file or pipe would collect every rewrite).
#pragma once

#include <string>

#include "interface/view.h"

class ProgressLine {
public:
    ProgressLine();
    ~ProgressLine();
    ProgressLine(const ProgressLine&) = delete;
    ProgressLine& operator=(const ProgressLine&) = delete;

    // The object the driver asks; cancelled once the user interrupts the program.
    q5_PROGRESS* Progress() { return &progress_; }
    bool Cancelled() { return q5_PROGRESS::Cancelled(&progress_); }

    // Off for --quiet; on by default only on a terminal.
    void SetVisible(bool visible) { visible_ = visible; }
    // Rewrites the line: "frame 3/36 turn_002.png".
    void Frame(int index, int count, const std::string& file);
    // Ends the line, if one was written.
    void Done();

private:
    q5_PROGRESS progress_;
    bool open_ = false;
    bool visible_;
};
