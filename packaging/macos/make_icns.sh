#!/bin/sh
# make_icns.sh ICONS OUT: an icon file from the drawn PNGs (ICONS/<size>x<size>/apps/ostra.png)
set -e
set=$(mktemp -d)/ostra.iconset
mkdir -p "$set"
for size in 16 32 128 256 512; do
    cp "$1/${size}x${size}/apps/ostra.png" "$set/icon_${size}x${size}.png"
done
for size in 16 32 128 256; do
    cp "$1/$((size * 2))x$((size * 2))/apps/ostra.png" "$set/icon_${size}x${size}@2x.png"
done
iconutil -c icns -o "$2" "$set"
