#!/usr/bin/env bash
# uinput_test.sh UINPUT_READBACK
#
# Boots Debian's own kernel, which has uinput, in an emulated machine, plays reports into the
# joystick there, and compares what evdev and SDL read back with what they should. The kernel,
# busybox and QEMU are downloaded once and not installed. Exit status 77: they cannot be had here.
set -euo pipefail
here=$(cd "$(dirname "$0")" && pwd)
cache=${XDG_CACHE_HOME:-$HOME/.cache}/quillorbit/uinput-vm
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT

# apt-get without its locks and its own user: it writes below the cache alone.
apt_get() { apt-get -qq -o Debug::NoLocking=1 -o APT::Sandbox::User="$(id -un)" "$@"; }

# Fills a folder with vmlinux, uinput.ko, evdev.ko, busybox, and the unpacked packages, QEMU among
# them.
fill_cache() {
  local kernel deb image start
  apt_get update || true  # the package lists may be missing or old
  kernel=$(apt-cache depends linux-image-amd64 |
    awk '/Depends: linux-image-[0-9]/ { print $2; exit }')
  mkdir -p "$1/debs/partial" "$1/unpacked"
  apt_get -y --no-install-recommends --reinstall --download-only \
    -o Dir::Cache::archives="$1/debs" install busybox-static qemu-system-x86 "${kernel:?}"
  for deb in "$1"/debs/*.deb; do dpkg-deb -x "$deb" "$1/unpacked"; done
  # Unpacking the kernel's xz stream here spares the emulated machine more than ten seconds.
  image=$(echo "$1"/unpacked/boot/vmlinuz-*)
  start=$(LC_ALL=C grep -aboP '\xFD7zXZ\x00' "$image" | head -n 1 | cut -d : -f 1)
  xz -dc --single-stream < <(tail -c "+$((start + 1))" "$image") >"$1/vmlinux"
  find "$1/unpacked" \( -path '*/bin/busybox' -o -name uinput.ko -o -name evdev.ko \) -exec mv {} "$1" \;
  rm -r "$1/debs" "$1"/unpacked/{boot,lib/modules}
}

mkdir -p "${cache%/*}"
exec 9>"$cache.lock"
flock 9  # one at a time
if [ ! -d "$cache" ]; then
  rm -rf "$cache.new"
  fill_cache "$cache.new" &>"$work/log" &  # a process of its own, so that its first failure ends it
  wait $! || {
    echo "no virtual machine: $(tail -n 1 "$work/log")"
    exit 77
  }
  mv "$cache.new" "$cache"
fi
exec 9>&-

# The first file system in memory: the program, its libraries at their places, and busybox.
root=$work/root
mkdir -p "$root"/{bin,dev,etc,proc,sys}
mkdir -m 1777 "$root/tmp"
cp "$cache"/*.ko "$root"
cp "$cache/busybox" "$root/bin"
cp "$here/init.sh" "$root/init"
cp "$1" "$root/uinput_readback"
ldd "$1" | grep -oE '/[^ ]+' | xargs cp -L --parents -t "$root"
(cd "$root" && find . | bin/busybox cpio -o -H newc -R 0:0 2>/dev/null) >"$work/initramfs"

lib=$cache/unpacked/usr/lib/x86_64-linux-gnu
share=$cache/unpacked/usr/share
LD_LIBRARY_PATH=$lib:$cache/unpacked/lib/x86_64-linux-gnu timeout 200 \
  "$cache/unpacked/usr/bin/qemu-system-x86_64" -L "$share/qemu" -L "$share/seabios" \
  -nodefaults -no-reboot -display none -accel tcg -cpu max -m 1024 \
  -kernel "$cache/vmlinux" -initrd "$work/initramfs" \
  -append "console=ttyS0 panic=-1 mitigations=off cryptomgr.notests=1 random.trust_cpu=on" \
  -serial "file:$work/console" -serial "file:$work/seen" || tail -n 15 "$work/console"
diff -u --label expected "$here/vm_expected.txt" --label seen "$work/seen"
