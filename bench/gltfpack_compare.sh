#!/bin/sh
# Times ostrex (default options) against gltfpack (-noq) on a 2M-triangle glTF grid: wall time, CPU
# time and peak memory, best of 3 runs each. Builds ostrex Release in build-rel and installs
# gltfpack from Debian when it is missing.
#
#   sh bench/gltfpack_compare.sh [WORK_DIR]   (WORK_DIR defaults to a fresh temporary folder)
set -eu
ROOT=$(cd "$(dirname "$0")/.." && pwd)
WORK=${1:-$(mktemp -d /tmp/ostrex-gltfpack-XXXXXX)}
mkdir -p "$WORK"

if ! command -v gltfpack >/dev/null 2>&1; then
    echo "installing gltfpack" >&2
    if [ "$(id -u)" = 0 ]; then SUDO=; else SUDO=sudo; fi
    $SUDO apt-get install -y gltfpack >&2
fi
[ -x /usr/bin/time ] || { echo "/usr/bin/time is missing (Debian package 'time')" >&2; exit 1; }

cmake -S "$ROOT" -B "$ROOT/build-rel" -G Ninja -DCMAKE_BUILD_TYPE=Release -DOSTREX_SANITIZE=OFF >/dev/null
cmake --build "$ROOT/build-rel" -j2 --target ostrex >/dev/null
OSTREX=$(find "$ROOT/build-rel" -type f -name ostrex -perm -u+x | head -n 1)

[ -f "$WORK/grid.gltf" ] || python3 "$ROOT/bench/make_scenes.py" grid "$WORK/grid" 1000

# Runs a command 3 times; prints "wall cpu peak_kb" of the fastest run.
best_of_3() {
    best=""
    for run in 1 2 3; do
        /usr/bin/time -v -o "$WORK/time.txt" "$@" >"$WORK/run.log" 2>&1 || { cat "$WORK/run.log" >&2; exit 1; }
        line=$(awk -F': ' '
            /Elapsed \(wall clock\)/ { n = split($2, p, ":"); w = 0; for (i = 1; i <= n; i++) w = w * 60 + p[i] }
            /User time/ { u = $2 } /System time/ { s = $2 } /Maximum resident/ { m = $2 }
            END { printf "%.3f %.3f %d\n", w, u + s, m }' "$WORK/time.txt")
        if [ -z "$best" ] || [ "$(echo "$line $best" | awk '{ print ($1 < $4) }')" = 1 ]; then best=$line; fi
    done
    echo "$best"
}

set -- $(best_of_3 "$OSTREX" "$WORK/grid.gltf" "$WORK/grid.tvo"); O_WALL=$1 O_CPU=$2 O_MEM=$3
set -- $(best_of_3 gltfpack -noq -i "$WORK/grid.gltf" -o "$WORK/grid-packed.glb"); G_WALL=$1 G_CPU=$2 G_MEM=$3

echo "input: $WORK/grid.gltf, 1000 x 1000 quads (2000000 triangles, 1002001 vertices)"
printf '%-9s %9s %9s %12s\n' tool "wall s" "cpu s" "peak MiB"
printf '%-9s %9s %9s %12s\n' ostrex "$O_WALL" "$O_CPU" "$(echo "$O_MEM" | awk '{ printf "%.1f", $1 / 1024 }')"
printf '%-9s %9s %9s %12s\n' gltfpack "$G_WALL" "$G_CPU" "$(echo "$G_MEM" | awk '{ printf "%.1f", $1 / 1024 }')"
echo "$O_WALL $G_WALL $O_CPU $G_CPU" | awk '{ printf "ratio ostrex/gltfpack: wall %.2f, cpu %.2f\n", $1 / $2, $3 / $4 }'
