# shellcheck shell=bash
# A private X server with a window manager and moving clients, for scripts that need a desktop on
# a machine without one. Whatever is started through `start` is ended by end_started, in reverse order, by
# process id.

started=()

# start COMMAND...: runs it beside the script, without its noise.
start() {
  "$@" >/dev/null 2>&1 &
  started+=($!)
}

end_started() {
  local i
  for ((i = ${#started[@]} - 1; i >= 0; i--)); do
    kill "${started[i]}" 2>/dev/null || true
    wait "${started[i]}" 2>/dev/null || true
  done
  started=()
}

# wait_for WHAT COMMAND...: tries the command until it succeeds, for ten seconds at most.
wait_for() {
  local what=$1 try
  shift
  for ((try = 0; try < 100; try++)); do
    "$@" >/dev/null 2>&1 && return
    sleep 0.1
  done
  echo "$what did not come up" >&2
  return 1
}

has_window_manager() {
  xprop -root _NET_SUPPORTING_WM_CHECK | grep -q 'window id'
}

# start_private_desktop WIDTH HEIGHT: sets DISPLAY to a new X server with a window manager. The
# server chooses its number, so that it never meets another one.
start_private_desktop() {
  local number
  number=$(mktemp)
  Xvfb -displayfd 6 -screen 0 "$1x$2x24" -nolisten tcp -noreset 6>"$number" >/dev/null 2>&1 &
  started+=($!)
  wait_for 'the private X server' test -s "$number"
  DISPLAY=:$(cat "$number")
  export DISPLAY
  rm -f "$number"
  wait_for 'the private X server' xprop -root
  start openbox --sm-disable
  wait_for 'the window manager' has_window_manager
}

# split_into_monitors WIDTH HEIGHT: the screen becomes two monitors of that size, side by side, the
# left one being the main one.
split_into_monitors() {
  xrandr --setmonitor '*shared' "$1/508x$2/286+0+0" screen >/dev/null
  xrandr --setmonitor viewing "$1/508x$2/286+$1+0" none
}

# Prints text for ever, in the pace of a busy build.
scroll_text() {
  local file line colours=(32 36 37 92 93 94 96)
  while true; do
    for file in include/*.h src/*/*.cpp tools/*.cpp; do
      printf '\n\033[1;33m%s\033[0m\n' "$file"
      while IFS= read -r line; do
        printf '\033[%dm%s\033[0m\n' "${colours[RANDOM % ${#colours[@]}]}" "$line"
        sleep 0.03
      done <"$file"
    done
  done
}
export -f scroll_text

# Moves the window on a circle for ever: move_around WINDOW X Y RADIUS
move_around() {
  awk -v x="$2" -v y="$3" -v r="$4" -v window="$1" 'BEGIN {
    for (;; a += 0.06) {
      printf "windowmove %s %d %d\n", window, x + r * cos(a), y + r * sin(a)
      printf "mousemove %d %d\nsleep 0.03\n", x + 2 * r * cos(-a / 2), y + r * sin(-a / 2)
    }
  }' | xdotool -
}

# start_clients: a desktop on which something always moves.
start_clients() {
  xsetroot -mod 24 24 -fg '#27496d' -bg '#1d3a5c'
  start xterm -T 'Scrolling text' -geometry 100x38+40+60 -fa 'DejaVu Sans Mono' -fs 11 \
    -bg '#0b132b' -fg '#e0e6ed' -e bash -c scroll_text
  start xclock -analog -update 1 -norender -geometry 300x300+1560+60 -bg '#fdf6e3' -fg '#073642' \
    -hd '#cb4b16' -hl '#073642'
  start ffplay -an -left 1040 -top 60 -window_title Film -f lavfi \
    -i 'gradients=s=480x270:r=30:n=4:speed=0.02:c0=0xe63946:c1=0xf4a261:c2=0x2a9d8f:c3=0x457b9d'
  start xeyes -geometry 360x220+1400+700
  start xterm -T 'Time' -geometry 40x6+60+850 -fa 'DejaVu Sans Mono' -fs 20 -bg '#1d3557' \
    -fg '#f1faee' -e bash -c 'while true; do printf "\033[H\n  %(%A, %d %B)T\n  %(%T)T"; sleep 0.2; done'
  wait_for 'a moving window' xdotool search --onlyvisible --class XEyes
  move_around "$(xdotool search --onlyvisible --class XEyes | head -1)" 1300 640 90 >/dev/null 2>&1 &
  started+=($!)
}
