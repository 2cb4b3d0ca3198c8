// Storage of the plug-in's process-wide state.
#include "plugin/plugin_state.h"

DriverModule& Plugin() {
    static DriverModule state;
    return state;
}
