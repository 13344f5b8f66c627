#!/bin/sh
# Checks that an ostrex binary writes exactly the recorded bytes for the sample and the benchmark
# scenes: speed work must never change an output byte. Scenes are generated into WORK_DIR when missing.
#
#   sh bench/check_output_bytes.sh OSTREX_BINARY [WORK_DIR] [EXTRA_OSTREX_ARGS...]
#   (WORK_DIR defaults to /tmp/ostrex-bench-scenes; extra arguments go to every export, e.g. --threads 1)
# Exit status 0 when every file matches bench/output-sha256.txt, 1 otherwise.
set -eu
ROOT=$(cd "$(dirname "$0")/.." && pwd)
OSTREX=$(cd "$(dirname "$1")" && pwd)/$(basename "$1"); shift
WORK=${1:-/tmp/ostrex-bench-scenes}; [ $# -gt 0 ] && shift
mkdir -p "$WORK"

for scene in grid nodes skinned; do
    [ -f "$WORK/$scene.gltf" ] || python3 "$ROOT/bench/make_scenes.py" "$scene" "$WORK/$scene"
done
UV="--set bExportMappingChannels=1"
ANIM="--set bExportAnimations=1 --set bExportSkin=1"
"$OSTREX" "$ROOT/samples/sample.gltf" "$WORK/sample.tvo" $UV $ANIM "$@" >/dev/null
"$OSTREX" "$WORK/grid.gltf" "$WORK/grid.tvo" $UV "$@" >/dev/null
"$OSTREX" "$WORK/nodes.gltf" "$WORK/nodes.tvo" $UV "$@" >/dev/null
"$OSTREX" "$WORK/skinned.gltf" "$WORK/skinned.tvo" $UV $ANIM "$@" >/dev/null

cd "$WORK" && sha256sum -c "$ROOT/bench/output-sha256.txt"
