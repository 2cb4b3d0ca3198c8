#!/usr/bin/env bash
# Fails when a source file includes a folder that its own folder may not depend on, so the
# layers keep depending one way. Prints the folder graph with --graph.
#   interface <- core/platform <- core/services <- core/containers <- core/stream
#             <- core/math, core/language <- zbuffer/raster <- zbuffer <- plugin
#   interface, core <- host/view <- host/scene <- host/formats <- host/app <- host/cli
set -euo pipefail
cd "$(dirname "$0")/.."

usage() {
    echo "usage: tools/check_layers.sh [--graph]"
    echo "Checks every #include \"folder/...\" of interface/, core/, zbuffer/, plugin/ and host/"
    echo "against the layer order; exits 1 and lists the offending lines when one runs against it."
}
graph=0
case "${1:-}" in
    -h|--help) usage; exit 0 ;;
    --graph) graph=1 ;;
    "") ;;
    *) usage >&2; exit 2 ;;
esac

# Each folder with the folders it builds on directly; it may include those and everything they
# may include.
declare -A below=(
    [interface]=""
    [core/platform]="interface"
    [core/services]="core/platform"
    [core/containers]="core/services"
    [core/stream]="core/containers"
    [core/math]="core/stream"
    [core/language]="core/stream"
    [core/filetype]="core/language"
    [zbuffer/raster]="core/math"
    [zbuffer]="zbuffer/raster"
    [plugin]="zbuffer core/language"
    [host/view]="core/math core/filetype"
    [host/scene]="host/view"
    [host/formats]="host/scene"
    [host/app]="host/formats"
    [host/cli]="host/app"
    [host/viewer]="host/app"
)

# Every folder that `layer` may include besides itself.
declare -A allowed=()
reach() {
    local layer=$1 out="" dep
    for dep in ${below[$layer]}; do
        [[ -v allowed[$dep] ]] || reach "$dep"
        out+=" $dep ${allowed[$dep]}"
    done
    allowed[$layer]=$(tr ' ' '\n' <<<"$out" | sort -u | xargs)
}
for layer in "${!below[@]}"; do [[ -v allowed[$layer] ]] || reach "$layer"; done

# The layer a path belongs to: the longest listed folder that contains it.
layer_of() {
    local dir=$1
    while [[ -n $dir && $dir != . ]]; do
        [[ -v allowed[$dir] ]] && { echo "$dir"; return; }
        dir=$(dirname "$dir")
    done
}

bad=0
declare -A edges=()
while IFS= read -r file; do
    from=$(layer_of "$(dirname "$file")")
    if [[ -z $from ]]; then
        echo "$file: folder has no layer; add it to tools/check_layers.sh" >&2
        bad=1
        continue
    fi
    while IFS=: read -r line target; do
        to=$(layer_of "$(dirname "$target")")
        [[ -z $to || $to == "$from" ]] && continue
        edges["$from -> $to"]=1
        if [[ " ${allowed[$from]} " != *" $to "* ]]; then
            echo "$file:$line: $from may not include $target" >&2
            bad=1
        fi
    done < <(grep -n -o -E '^#include "[a-z_]+/[^"]+"' "$file" | sed -E 's/#include "(.*)"/\1/')
done < <(git ls-files -- interface core zbuffer plugin host | grep -E '\.(h|cpp|inc)$')

if ((graph)); then printf '%s\n' "${!edges[@]}" | sort; fi
if ((bad)); then
    echo "layer check failed: includes run against the layer order" >&2
    exit 1
fi
echo "layer check: every include follows the layer order"
