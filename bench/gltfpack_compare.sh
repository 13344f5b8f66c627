#!/bin/sh
# Times ostrex against gltfpack (-noq) on the benchmark scenes: five runs of each, taken in turn
# (A B A B ...), and prints the medians of wall time and peak resident memory with their ratios,
# as a Markdown table. Builds ostrex Release in build-rel and installs gltfpack from Debian when it
# is missing. Scenes are generated into WORK_DIR when missing (bench/make_scenes.py).
#
#   sh bench/gltfpack_compare.sh [WORK_DIR] [RUNS]   (defaults: /tmp/ostrex-bench-scenes, 5)
set -eu
ROOT=$(cd "$(dirname "$0")/.." && pwd)
WORK=${1:-/tmp/ostrex-bench-scenes}
RUNS=${2:-5}
mkdir -p "$WORK"

if ! command -v gltfpack >/dev/null 2>&1; then
    echo "installing gltfpack" >&2
    if [ "$(id -u)" = 0 ]; then SUDO=; else SUDO=sudo; fi
    $SUDO apt-get install -y gltfpack >&2
fi
[ -x /usr/bin/time ] || { echo "/usr/bin/time is missing (Debian package 'time')" >&2; exit 1; }

cmake -S "$ROOT" -B "$ROOT/build-rel" -G Ninja -DCMAKE_BUILD_TYPE=Release -DOSTREX_BUILD_TESTS=OFF \
    -DOSTREX_BUILD_BENCH=OFF >/dev/null
cmake --build "$ROOT/build-rel" -j2 --target ostrex >/dev/null
OSTREX="$ROOT/build-rel/Apps/ostrex/ostrex"

[ -f "$WORK/grid.gltf" ] || python3 "$ROOT/bench/make_scenes.py" grid "$WORK/grid" 1000
[ -f "$WORK/grid8m.gltf" ] || python3 "$ROOT/bench/make_scenes.py" grid "$WORK/grid8m" 2000
[ -f "$WORK/nodes.gltf" ] || python3 "$ROOT/bench/make_scenes.py" nodes "$WORK/nodes"
[ -f "$WORK/skinned.gltf" ] || python3 "$ROOT/bench/make_scenes.py" skinned "$WORK/skinned"

# Runs a command once; appends "wall_seconds peak_kb" to the file $1.
measure() {
    out=$1; shift
    /usr/bin/time -f '%e %M' -o "$WORK/time.txt" "$@" >"$WORK/run.log" 2>&1 || { cat "$WORK/run.log" >&2; exit 1; }
    cat "$WORK/time.txt" >>"$out"
}

# The median of column $2 of file $1.
median() {
    sort -n -k "$2" "$1" | awk -v k="$2" '{ v[NR] = $k } END { print (NR % 2) ? v[(NR + 1) / 2] : (v[NR / 2] + v[NR / 2 + 1]) / 2 }'
}

echo "| scene | ostrex s | gltfpack s | wall ratio | ostrex MiB | gltfpack MiB | memory ratio |"
echo "|---|---|---|---|---|---|---|"
for scene in grid grid8m nodes skinned; do
    extra="--set bExportMappingChannels=1"
    [ "$scene" = skinned ] && extra="$extra --set bExportSkin=1 --set bExportAnimations=1"
    rm -f "$WORK/o.txt" "$WORK/g.txt"
    run=0
    while [ "$run" -lt "$RUNS" ]; do
        # shellcheck disable=SC2086
        measure "$WORK/o.txt" "$OSTREX" "$WORK/$scene.gltf" "$WORK/$scene.tvo" $extra
        measure "$WORK/g.txt" gltfpack -noq -i "$WORK/$scene.gltf" -o "$WORK/$scene-packed.glb"
        run=$((run + 1))
    done
    ow=$(median "$WORK/o.txt" 1) gw=$(median "$WORK/g.txt" 1)
    om=$(median "$WORK/o.txt" 2) gm=$(median "$WORK/g.txt" 2)
    echo "$scene $ow $gw $om $gm" | awk '{ printf "| %s | %.2f | %.2f | %.2f | %.0f | %.0f | %.2f |\n", $1, $2, $3, $2 / $3, $4 / 1024, $5 / 1024, $4 / $5 }'
done
