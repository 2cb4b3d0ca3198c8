#!/usr/bin/env bash
# Whole-process time and peak memory of tessera-render on generated 100k- and 1M-triangle OBJ
# files at 1920x1080, beside f3d on the same files in the same run.
#   bench/model_load_bench.sh [TESSERA_RENDER] [WORK_FOLDER] [RUNS]
# Needs GNU time (/usr/bin/time); f3d and xvfb-run are measured when present.
set -euo pipefail
render=${1:-build/default/bin/tessera-render}
work=${2:-build/model-bench}
runs=${3:-3}
mkdir -p "$work"

# A wavy square grid of n x n vertices with normals: 2 (n - 1)^2 triangles.
make_grid() {
    local n=$1 out=$2
    [[ -s $out ]] && return
    awk -v n="$n" 'BEGIN {
        pi = 3.14159265358979
        for (j = 0; j < n; j++) for (i = 0; i < n; i++) {
            u = i / (n - 1); w = j / (n - 1)
            printf "v %.6f %.6f %.6f\n", 2 * u - 1, 0.1 * sin(6 * pi * u) * cos(6 * pi * w), 2 * w - 1
        }
        for (j = 0; j < n; j++) for (i = 0; i < n; i++) {
            u = i / (n - 1); w = j / (n - 1)
            dx = 0.3 * pi * cos(6 * pi * u) * cos(6 * pi * w); dz = -0.3 * pi * sin(6 * pi * u) * sin(6 * pi * w)
            l = sqrt(dx * dx + 1 + dz * dz)
            printf "vn %.5f %.5f %.5f\n", -dx / l, 1 / l, -dz / l
        }
        for (j = 0; j < n - 1; j++) for (i = 0; i < n - 1; i++) {
            a = j * n + i + 1; b = a + 1; c = a + n; d = c + 1
            printf "f %d//%d %d//%d %d//%d\nf %d//%d %d//%d %d//%d\n", a, a, c, c, b, b, b, b, c, c, d, d
        }
    }' > "$out"
}
make_grid 225 "$work/grid_100k.obj"
make_grid 708 "$work/grid_1m.obj"

# Best time and largest peak resident size over the runs: "seconds megabytes".
measure() {
    local best="" peak=0 t m
    for ((r = 0; r < runs; r++)); do
        /usr/bin/time -f "%e %M" -o "$work/time.txt" "$@" >/dev/null 2>"$work/stderr.txt" ||
            { echo "failed: $*" >&2; cat "$work/stderr.txt" >&2; return 1; }
        read -r t m < "$work/time.txt"
        [[ -z $best ]] || awk -v a="$t" -v b="$best" 'BEGIN { exit !(a < b) }' && best=$t
        ((m > peak)) && peak=$m
    done
    echo "$best $((peak / 1024))"
}

have_f3d=0
command -v f3d >/dev/null && command -v xvfb-run >/dev/null && have_f3d=1
printf "%-14s %-16s %9s %9s\n" model program seconds "peak MB"
for model in grid_100k grid_1m; do
    file="$work/$model.obj"
    read -r ts tm < <(measure "$render" "$file" -o "$work/$model.tessera.png" --size 1920x1080)
    printf "%-14s %-16s %9s %9s\n" "$model" tessera-render "$ts" "$tm"
    if ((have_f3d)); then
        read -r fs fm < <(measure xvfb-run -a f3d --output "$work/$model.f3d.png" \
            --resolution 1920,1080 "$file")
        printf "%-14s %-16s %9s %9s\n" "$model" "f3d (xvfb-run)" "$fs" "$fm"
        awk -v a="$ts" -v b="$fs" -v c="$tm" -v d="$fm" -v m="$model" 'BEGIN {
            printf "%-14s %-16s %8.2fx %8.2fx\n", m, "tessera / f3d", a / b, c / d }'
    fi
done
