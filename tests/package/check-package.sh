#!/usr/bin/env bash
# Builds the Debian package from the build folder given and checks that it
# holds exactly what a user installs, and that the desktop files read.
set -euo pipefail
build="$1"
out=$(mktemp -d)
trap 'rm -rf "$out"' EXIT
cpack --config "$build/CPackConfig.cmake" -B "$out" >/dev/null
deb=$(ls "$out"/arbordeck_*.deb)
contents=$(dpkg-deb -c "$deb" | awk '{print $6}' | grep -v '/$' | sort)
expected=$(printf '%s\n' \
    ./usr/bin/arbordeck ./usr/bin/ardeck \
    ./usr/share/applications/arbordeck.desktop \
    ./usr/share/doc/arbordeck/README.md \
    ./usr/share/icons/hicolor/scalable/apps/arbordeck.svg \
    ./usr/share/mime/packages/arbordeck.xml | sort)
if [[ "$contents" != "$expected" ]]; then
    echo "package holds:"; echo "$contents"; echo "expected:"; echo "$expected"; exit 1
fi
dpkg-deb -f "$deb" Depends | grep -q qt6-qpa-plugins
dpkg-deb -x "$deb" "$out/root"
# The MIME database compiler refuses what the desktop would not take.
mkdir -p "$out/mime/packages"
cp "$out/root/usr/share/mime/packages/arbordeck.xml" "$out/mime/packages/"
errors=$(update-mime-database "$out/mime" 2>&1 | grep -i 'error' || true)
[[ -z "$errors" ]] || { echo "$errors"; exit 1; }
grep -q '^MimeType=.*application/x-bplist;.*x-scheme-handler/arbordeck;' \
    "$out/root/usr/share/applications/arbordeck.desktop"
echo "package ok: $(basename "$deb")"
