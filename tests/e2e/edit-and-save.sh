#!/usr/bin/env bash
# The editor as a user meets it: starts the real program on an X server,
# edits a value in the outline with keystrokes, saves, quits, and checks the
# file on disk. Usage: edit-and-save.sh ARBORDECK ARDECK SAMPLE
set -euo pipefail
arbordeck="$1" ardeck="$2" sample="$3"
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
cp "$sample" "$work/Agent.plist"
# Settings, autosaves and the instance socket of this run alone.
export XDG_CONFIG_HOME="$work/config" XDG_DATA_HOME="$work/data" TMPDIR="$work"
unset QT_QPA_PLATFORM

cat > "$work/session.sh" <<'SESSION'
set -euo pipefail
"$ARBORDECK" "$WORK/Agent.plist" 2>"$WORK/log" &
editor=$!
window=$(timeout 30 xdotool search --sync --name 'Agent\.plist' | head -1)
xdotool windowfocus --sync "$window"
sleep 0.5
# The root is selected and open: its second row is "Label". Return edits its value.
xdotool key --delay 80 Down Down Return ctrl+a
xdotool type --delay 30 'org.example.edited'
xdotool key --delay 80 Return ctrl+s
sleep 1
xdotool key ctrl+q
timeout 20 tail --pid="$editor" -f /dev/null
SESSION
ARBORDECK="$arbordeck" WORK="$work" xvfb-run -a -s "-screen 0 1280x1024x24" bash "$work/session.sh"
label=$("$ardeck" get "$work/Agent.plist" Label)
if [[ "$label" != "org.example.edited" ]]; then
    echo "Label on disk is '$label'"; cat "$work/log"; exit 1
fi
"$ardeck" lint "$work/Agent.plist" >/dev/null
echo "edited, saved and quit: Label is $label"
