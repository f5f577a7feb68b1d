#!/usr/bin/env bash
# Drives the Windows tool as unpacked from the zip, under wine on the virtual X screen
# it is started in (xvfb-run with -fbdir FB): four virtual controllers (the Windows
# panomat-sim) on 127.0.0.2-5, the tool told where they are by ZEDA_HOSTS, "Search MAC"
# and "Connect" clicked at fixed points of the window, message boxes answered with
# Return. The outcomes are checked apart from the clicks: the result files beside the
# tool, the connections the tool holds, the firmware read back into the title. The
# screen showing the box after Connect is kept as FB/refresh.xwd, and its text is read
# off it (tesseract).
#   windows-drive.sh APP_FOLDER FB
set -u
app_dir=$1
fb=$2
sim=""
app=""
say() { echo "drive: $*"; }
shot() { cp "$fb/Xvfb_screen0" "$fb/$1.xwd" 2>/dev/null; }
stop() {
    for pid in $app $sim; do kill "$pid" 2>/dev/null; done
    wineserver -w 2>/dev/null
}
bad() { say "FAIL: $*"; shot failure; stop; exit 1; }
other_windows() { xdotool search --onlyvisible --name '.' 2>/dev/null | grep -vx "$main" || true; }
# Answers every message box until none has come for two seconds (at most 60 s); the
# first is kept on screen for a moment when `keep` names a shot.
answer_boxes() {
    local keep=${1:-} quiet=0 answered=0 box
    for _ in $(seq 600); do
        box=$(other_windows | head -1)
        if [ -n "$box" ]; then
            quiet=0
            if [ -n "$keep" ]; then
                sleep 1
                shot "$keep"
                # Where the box is, to read it apart from the window behind.
                (eval "$(xdotool getwindowgeometry --shell "$box")"
                    echo "${WIDTH}x${HEIGHT}+${X}+${Y}") >"$fb/$keep.box"
                keep=""
            fi
            timeout 5 xdotool windowfocus "$box" 2>/dev/null
            sleep 0.2
            timeout 5 xdotool key Return 2>/dev/null
            for _ in $(seq 50); do
                other_windows | grep -qx "$box" || break
                sleep 0.1
            done
            answered=$((answered + 1))
        else
            quiet=$((quiet + 1))
            [ "$quiet" -ge 20 ] && break
        fi
        sleep 0.1
    done
    echo "$answered"
}
# The controllers the tool holds established connections to, sorted. Only the tool
# connects to port 23 while it runs.
connections() {
    ss -tnH state established '( dport = :23 )' 2>/dev/null | awk '{ print $4 }' | sort -u |
        tr '\n' ' '
}
expected="127.0.0.2:23 127.0.0.3:23 127.0.0.4:23 127.0.0.5:23 "

cd "$app_dir" || bad "no folder $app_dir"
rm -f MAC.txt IP.txt
wine ./panomat-sim.exe --devices 4 --first 127.0.0.2 >"$fb/sim.log" 2>&1 &
sim=$!
for _ in $(seq 300); do
    [ "$(ss -ltnH '( sport = :23 )' | grep -c '127\.0\.0\.[2-5]:23')" -eq 4 ] && break
    sleep 0.1
done
[ "$(ss -ltnH '( sport = :23 )' | grep -c '127\.0\.0\.[2-5]:23')" -eq 4 ] ||
    bad "the virtual controllers do not listen: $(cat "$fb/sim.log")"
say "panomat-sim.exe listens on 127.0.0.2-5 port 23"

wine ./panomat-set.exe >"$fb/app.log" 2>&1 &
app=$!
main=$(timeout 60 xdotool search --sync --onlyvisible --name '^Panomat Set' 2>/dev/null | head -1)
[ -n "$main" ] || bad "no window appeared in 60 s: $(cat "$fb/app.log")"
sleep 2
say "window '$(xdotool getwindowname "$main")' $(xdotool getwindowgeometry "$main" | tr '\n' ' ')"
shot opened

# The buttons from the window's corner. Windows' fonts are wider than Linux's, so the
# layout is not the one docs/screenshots shows: "Search MAC" and "Connect" stand here
# with the fonts wine offers.
read -r search_x search_y <<<"${SEARCH_MAC_AT:-358 144}"
read -r connect_x connect_y <<<"${CONNECT_AT:-120 105}"
xdotool mousemove --window "$main" --sync "$search_x" "$search_y" click 1
for _ in $(seq 300); do [ -n "$(other_windows)" ] && break; sleep 0.1; done
[ -n "$(other_windows)" ] || bad "no message box within 30 s of clicking Search MAC"
[ -f MAC.txt ] && [ -f IP.txt ] || bad "the search left no MAC.txt and IP.txt beside the tool"
macs=$(grep -cE '^([0-9A-F]{2}-){5}[0-9A-F]{2}' MAC.txt)
[ "$macs" -eq 4 ] || bad "MAC.txt lists $macs MACs, not the 4 controllers: $(cat MAC.txt)"
ip=$(tail -1 IP.txt | tr -d '\r')
[ "$ip" = "127.000.000.002127.000.000.003127.000.000.004127.000.000.005" ] ||
    bad "IP.txt does not list 127.0.0.2-127.0.0.5: '$ip'"
say "search: MAC.txt and IP.txt list the 4 controllers: $(tr -d '\r' <MAC.txt | tr '\n' ' ')"
say "search: answered $(answer_boxes searched) message boxes; connected now to: $(connections)"

xdotool mousemove --window "$main" --sync "$connect_x" "$connect_y" click 1
held=""
for _ in $(seq 300); do held=$(connections); [ "$held" = "$expected" ] && break; sleep 0.1; done
[ "$held" = "$expected" ] || bad "after Connect the tool holds connections to '$held', not to all four controllers"
boxes=$(answer_boxes refresh)
held=$(connections)
[ "$held" = "$expected" ] || bad "the connections did not last: '$held'"
# What the box said, read off the screen: Qt draws it, no window text tells it.
convert "xwd:$fb/refresh.xwd" -crop "$(cat "$fb/refresh.box" 2>/dev/null)" -resize 300% \
    "$fb/refresh-read.png" 2>/dev/null &&
    said=$(tesseract "$fb/refresh-read.png" - 2>/dev/null | tr -s ' \n' ' ')
[[ ${said:-} == *"Refresh completed"* ]] ||
    bad "the box after Connect does not read \"Refresh completed !\": '${said:-}'"
say "connect: the box said \"Refresh completed !\""
title=$(xdotool getwindowname "$main")
[[ $title == *"FW: "* ]] || bad "the title shows no firmware read from the controller: '$title'"
say "connect: established connections to $held; answered $boxes message boxes; title '$title'"
shot connected
stop
say "all good"
