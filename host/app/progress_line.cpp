// Progress reporting and interruption of a render.
#include "host/app/progress_line.h"

#include <csignal>
#include <cstdio>

#include "core/platform/output_file.h"

namespace {

volatile std::sig_atomic_t gInterrupted = 0;

extern "C" void OnInterrupt(int) {
    gInterrupted = 1;
}

bool StillWanted(q5_PROGRESS*) {
    return gInterrupted == 0;
}

} // namespace

ProgressLine::ProgressLine() : visible_(q5plat::IsTerminal(q5plat::StandardStream::Error)) {
    progress_.callback = &StillWanted;
    std::signal(SIGINT, OnInterrupt);
}

ProgressLine::~ProgressLine() {
    std::signal(SIGINT, SIG_DFL);
    Done();
}

void ProgressLine::Frame(int index, int count, const std::string& file) {
    if (!visible_) return;
    std::fprintf(stderr, "\rframe %d/%d %s   ", index, count, file.c_str());
    std::fflush(stderr);
    open_ = true;
}

void ProgressLine::Done() {
    if (open_) std::fputc('\n', stderr);
    open_ = false;
}
