# shellcheck shell=bash
# A private Wayland desktop without a screen, for scripts: a headless GNOME compositor with two
# monitors. Windows open on the first one, which is the larger; the other is for the viewer, which
# runs on Xwayland. Needs private-desktop.sh.

# The consent of a person, laid into the desktop's store as the portal would: the first monitor.
grant_first_monitor() {
  local store=org.freedesktop.impl.portal.PermissionStore
  gdbus call --session -d "$store" -o "/${store//.//}" -m "$store.Set" screencast true "$1" \
    "{'': ['yes']}" "<('GNOME', uint32 1, <(int64 1, int64 2, [(uint32 0, uint32 1,
      <'MetaVendor:MetaVirtualMonitor:0x00'>)])>)>" >/dev/null
}

# start_wayland_desktop FOLDER: sets the environment to a new desktop that lives in the folder.
start_wayland_desktop() {
  local home=$1 token=11111111-2222-3333-4444-555555555555
  export HOME=$home XDG_RUNTIME_DIR=$home XDG_DATA_HOME=$home/data XDG_CURRENT_DESKTOP=GNOME
  export XDG_CONFIG_HOME=$home/config GSETTINGS_BACKEND=memory
  export WAYLAND_DISPLAY=wayland-demo DBUS_SESSION_BUS_ADDRESS=unix:path=$home/bus
  unset DISPLAY
  start dbus-daemon --session --nofork --nopidfile "--address=$DBUS_SESSION_BUS_ADDRESS"
  wait_for 'the message bus' test -S "$home/bus"
  start pipewire
  start wireplumber
  wait_for 'PipeWire' test -S "$home/pipewire-0"
  mutter --wayland --headless --virtual-monitor 1280x720 --virtual-monitor 1280x700 \
    --wayland-display "$WAYLAND_DISPLAY" >"$home/mutter.log" 2>&1 &
  started+=($!)
  wait_for 'the compositor' test -S "$home/$WAYLAND_DISPLAY"
  grant_first_monitor "$token"
  echo "$token" >"$home/token"
  export VLM_PORTAL_TOKEN_FILE=$home/token
}

# Lets the viewer, an X11 client, find the desktop's X server.
use_xwayland() {
  wait_for 'Xwayland' grep -q 'public X11 display' "$HOME/mutter.log"
  DISPLAY=$(sed -n 's/.*public X11 display \(:[0-9]*\).*/\1/p' "$HOME/mutter.log" | head -1)
  XAUTHORITY=$(find "$HOME" -maxdepth 1 -name '.mutter-Xwaylandauth*' | head -1)
  export DISPLAY XAUTHORITY
}

# Clients that know nothing but Wayland: one that fills the screen and changes a little all the
# time, and a film.
start_native_clients() {
  local client=build/release/tests/wayland/native_client
  (
    printf '0 0 1280 720 1D3A5C\n'
    while sleep 0.1; do
      printf '%d %d 60 40 %06X\n' $((RANDOM % 1200)) $((RANDOM % 660)) $((RANDOM * 512))
    done
  ) | "$client" >/dev/null 2>&1 &
  started+=($!)
  start env -u DISPLAY SDL_VIDEODRIVER=wayland ffplay -an -window_title Film -f lavfi \
    -i 'gradients=s=480x270:r=30:n=4:speed=0.02:c0=0xe63946:c1=0xf4a261:c2=0x2a9d8f:c3=0x457b9d'
}
