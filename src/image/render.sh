#!/usr/bin/env bash
# Makes png/ anew from svg/, each picture at 1x and @2x. Run it after
# a change of an SVG file and commit both. Builds a small renderer on Qt Svg (qt6-svg-dev).
set -euo pipefail
cd "$(dirname "${BASH_SOURCE[0]}")"

work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
cmake -S render -B "$work" -DCMAKE_BUILD_TYPE=Release >/dev/null
cmake --build "$work" >/dev/null
export QT_QPA_PLATFORM=offscreen XDG_RUNTIME_DIR="$work"

# render NAME WIDTH HEIGHT: the picture has those sizes in device-independent pixels.
render() {
    "$work/render" "svg/$1.svg" "png/$1.png" "$2" "$3"
    "$work/render" "svg/$1.svg" "png/$1@2x.png" "$(($2 * 2))" "$(($3 * 2))"
}

for svg in svg/*.svg; do
    name=$(basename "$svg" .svg)
    case $name in
    Tarno_LOGO_blue) render "$name" 480 280 ;;
    chip_tarno)
        render "$name" 64 64
        for size in 16 24 32 48 256; do
            "$work/render" "$svg" "png/${name}_$size.png" "$size" "$size"
        done
        ;;
    *) render "$name" 24 24 ;;
    esac
done
