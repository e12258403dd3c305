# shellcheck shell=bash
# The remote desktop example between two private desktops: a person's work through the viewer, done
# by xdotool, and how fast it is seen. Needs private-desktop.sh, and the folder $output.
# shellcheck disable=SC2154 # the script that reads this sets it

readonly remote_programs=build/release/examples/remote-desktop
readonly shared_width=1280 shared_height=720

# Commands on one of the two desktops, each with its own sound server.
on_shared() { "${shared[@]}" "$@"; }
on_viewing() { "${viewing[@]}" "$@"; }

# start_sound_server SOCKET
start_sound_server() {
  start pulseaudio -n --daemonize=no --exit-idle-time=-1 --use-pid-file=false \
    -L "module-native-protocol-unix socket=$1 auth-anonymous=1" \
    -L 'module-null-sink sink_name=spk rate=48000 norewinds=1'
  wait_for 'the sound server' env PULSE_SERVER="unix:$1" pactl info
}

# make_link BITS_PER_SECOND DELAY_MS LOSS_PERCENT: the two sides live in network namespaces that
# only this link connects.
make_link() {
  local side
  for side in 1 2; do
    ip netns add "remote-$$-$side"
    namespaces+=("remote-$$-$side")
  done
  start "$remote_programs/slow_link" "${namespaces[0]}" "${namespaces[1]}" "$@"
  for side in 1 2; do
    wait_for 'the link' ip -n "remote-$$-$side" link show slow
    ip -n "remote-$$-$side" address add "10.99.0.$side/24" dev slow
    ip -n "remote-$$-$side" link set slow up
  done
  listen=(--listen 10.99.0.1:0)
}

end_remote_demo() {
  end_started
  local space
  for space in "${namespaces[@]}"; do ip netns delete "$space"; done
  rm -rf "$work"
}

start_remote_desktops() {
  export HOME=$work XDG_RUNTIME_DIR=$work
  start_sound_server "$work/shared-sound"
  start_sound_server "$work/viewing-sound"
  start_private_desktop "$shared_width" "$shared_height"
  shared=(env "DISPLAY=$DISPLAY" "PULSE_SERVER=unix:$work/shared-sound")
  shared_display=$DISPLAY
  touch "$work/letter"
  # The colour that a click changes is in the corner where the measurement looks.
  start env -C "$work" xedit -geometry 560x420+240+20 letter
  start bitmap -size 24x24 -geometry 420x440+830+20
  start env -C "$work" "PS1=$ " xterm -geometry 90x12+240+500 -fa 'DejaVu Sans Mono' -fs 9 \
    -e bash --norc
  start_private_desktop 1440 860
  viewing=(env "DISPLAY=$DISPLAY" "PULSE_SERVER=unix:$work/viewing-sound")
  viewing_display=$DISPLAY
  if ((${#namespaces[@]} > 0)); then
    shared+=(ip netns exec "${namespaces[0]}")
    viewing+=(ip netns exec "${namespaces[1]}")
  fi
}

start_both_roles() {
  "${shared[@]}" "$remote_programs/remote-desktop" share "${listen[@]}" >"$work/invitation" \
    2>"$output/share.log" &
  sharer=$!
  started+=("$sharer")
  wait_for 'the invitation' test -s "$work/invitation"
  "${viewing[@]}" "$remote_programs/remote-desktop" view - <"$work/invitation" 2>"$output/view.log" &
  viewer=$!
  started+=("$viewer")
  wait_for 'the viewer' grep -q 'is let in' "$output/share.log"
  window=$(on_viewing xdotool search --sync --onlyvisible --class '^Remote-desktop$' | head -1)
  on_viewing xdotool windowmove "$window" 60 60
  sleep 2
}

# point X Y: moves the pointer to a place of the shared screen, through the viewer.
point() { on_viewing xdotool mousemove --window "$window" "$1" "$2"; }

# check WHAT COMMAND...: says whether it came to be within some seconds.
check() {
  local what=$1
  shift
  if wait_for "$what" "$@" 2>/dev/null; then echo "  $what: yes"; else echo "  $what: NO" && failed=1; fi
}

# place_of SIDE WINDOW: sets X and Y to the window's corner on its screen.
place_of() {
  local corner
  corner=$("on_$1" xwininfo "${@:2}" | awk '/Absolute upper-left/ { printf "%s ", $NF }')
  read -r X Y <<<"$corner"
}

# click_in_window TITLE X Y: from the corner of the window with the title on the shared side
click_in_window() {
  local X Y
  place_of shared -name "$1"
  point $((X + $2)) $((Y + $3))
  on_viewing xdotool click 1
}

type_a_letter() {
  local text='Dear reader, this was typed at a distance (42 km).'
  click_in_window xedit 200 300
  on_viewing xdotool type --delay 25 "$text"
  sleep 1
  click_in_window xedit 60 12 # Save
  check 'a text was typed and saved' grep -qF "$text" "$work/letter"
}

draw_a_line() {
  local before after step X Y
  before=$(on_shared import -silent -window root "$work/before.png" && sha256sum <"$work/before.png")
  place_of shared -name bitmap
  point $((X + 180)) $((Y + 120))
  on_viewing xdotool mousedown 1
  for ((step = 0; step <= 20; step++)); do
    point $((X + 180 + 9 * step)) $((Y + 120 + (step % 10 < 5 ? step % 10 : 10 - step % 10) * 30))
    sleep 0.03
  done
  on_viewing xdotool mouseup 1
  sleep 1
  after=$(on_shared import -silent -window root "$work/after.png" && sha256sum <"$work/after.png")
  check 'a line was drawn' test "$before" != "$after"
}

clipboard_is() { # SIDE TEXT
  [[ $("on_$1" xclip -selection clipboard -o 2>/dev/null) == "$2" ]]
}

copy_both_ways() {
  printf 'from there' | on_shared xclip -selection clipboard >/dev/null 2>&1
  check 'a text copied there is here' clipboard_is viewing 'from there'
  printf 'from here' | on_viewing xclip -selection clipboard >/dev/null 2>&1
  check 'a text copied here is there' clipboard_is shared 'from here'
}

# loudness FILE [FILTER,]: the mean volume of recorded samples, in decibels.
loudness() {
  ffmpeg -f s16le -ar 48000 -ac 1 -i "$1" -af "${2:-}volumedetect" -f null - 2>&1 |
    sed -n 's/.*mean_volume: \(.*\) dB/\1/p'
}

play_a_tone() {
  ffmpeg -v error -f lavfi -i 'sine=880:duration=4:sample_rate=48000' -ac 2 -y "$work/tone.wav"
  "${viewing[@]}" parec --device=spk.monitor --rate=48000 --channels=1 --format=s16le >"$work/heard" &
  local recorder=$!
  on_shared paplay "$work/tone.wav"
  sleep 1
  kill "$recorder"
  wait "$recorder" || true
  # How loud the sound is at the tone's frequency, and in all, in decibels.
  local within all
  within=$(loudness "$work/heard" bandpass=f=880:width_type=h:w=60,)
  all=$(loudness "$work/heard")
  echo "  the tone of 880 Hz was heard: $within dB of $all dB in all"
  check 'the tone was heard' awk "BEGIN { exit !($within > -45 && $all - $within < 6) }"
}

# Seconds of processor time that a process has used.
cpu_of() { awk '{ print ($14 + $15) / 100 }' "/proc/$1/stat"; }
bytes_sent() {
  on_shared ss -Htin state established | grep -o 'bytes_sent:[0-9]*' | cut -d: -f2 |
    sort -n | tail -1
}

# measure WHAT SECONDS: what both sides use and send meanwhile.
measure() {
  local cpu_sharer cpu_viewer bytes
  cpu_sharer=$(cpu_of "$sharer") cpu_viewer=$(cpu_of "$viewer") bytes=$(bytes_sent)
  sleep "$2"
  awk -v s0="$cpu_sharer" -v s1="$(cpu_of "$sharer")" -v v0="$cpu_viewer" \
    -v v1="$(cpu_of "$viewer")" -v b0="$bytes" -v b1="$(bytes_sent)" -v t="$2" -v what="$1" 'BEGIN {
      printf "  %-18s %7.2f Mb/s, processor: sharing %3.0f %%, viewing %3.0f %%\n",
        what, (b1 - b0) * 8 / t / 1e6, (s1 - s0) / t * 100, (v1 - v0) / t * 100 }'
}

measure_rates() {
  sleep 5
  measure 'a still screen' 5
  DISPLAY=$shared_display start ffplay -an -left 240 -top 500 -f lavfi \
    -i 'testsrc2=s=480x200:r=30'
  sleep 2
  measure 'a small film' 5
  kill "${started[-1]}"
  wait "${started[-1]}" || true
  unset 'started[-1]'
  DISPLAY=$shared_display start xterm -geometry 150x44+0+0 -fa 'DejaVu Sans Mono' -fs 11 \
    -e bash -c scroll_text
  sleep 2
  measure 'scrolling text' 5
  kill "${started[-1]}"
  wait "${started[-1]}" || true
  unset 'started[-1]'
  sleep 2
}

measure_clicks() {
  local X Y
  place_of viewing -id "$window"
  echo "  click to picture: $("$remote_programs/click_to_picture" "$shared_display" \
    "$viewing_display" $((X + 100)) $((Y + 100)) 60)"
}

# remote_demo [BITS_PER_SECOND DELAY_MS LOSS_PERCENT]
remote_demo() {
  work=$(mktemp -d) namespaces=() listen=() failed=0
  trap end_remote_demo EXIT
  [[ $# -eq 0 ]] || make_link "$@"
  start_remote_desktops
  start_both_roles
  echo "Work through the viewer:"
  type_a_letter
  draw_a_line
  copy_both_ways
  play_a_tone
  echo "How it feels:"
  measure_clicks
  measure_rates
  # The pointer leaves the viewer's window, so that it is drawn where the shared side has it.
  on_viewing xdotool mousemove 5 5
  on_shared xdotool mousemove 620 300
  sleep 2
  on_shared import -silent -window root "$output/shared.png"
  on_viewing import -silent -window root "$output/viewing.png"
  echo "Both screens are in $output/shared.png and $output/viewing.png."
  return "$failed"
}
