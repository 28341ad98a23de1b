#!/usr/bin/env bash
# Runs a command on an emulated processor, for machines that cannot run 32-bit programs.
#
#   scripts/emulate.sh COMMAND [ARGUMENT...]
#   scripts/emulate.sh --install    unpacks a kernel for it into build/emulator
#   scripts/emulate.sh --check      says why it cannot run here; exit status 1 then
#
# Starts a Debian kernel under QEMU with the files of this machine, so the command finds every file in
# its usual place, and the files that it writes stay. It runs as root with its own /tmp and without a
# network, and is about twenty times slower. Needs root. Exit status: the command's.
set -euo pipefail

root=$(cd "$(dirname "${BASH_SOURCE[0]}")/.." && pwd)
emulator=$root/build/emulator
kernel_package=linux-image-cloud-amd64
# Shares a directory of this machine with the guest; it comes with qemu-system-x86.
virtiofsd=/usr/lib/qemu/virtiofsd
# Each needs only modules before it.
modules=(virtio/virtio_ring virtio/virtio virtio/virtio_pci_legacy_dev virtio/virtio_pci_modern_dev
  virtio/virtio_pci fuse virtiofs)

why_not() {
  if [ "$(id -u)" -ne 0 ]; then
    echo 'the emulator needs root'
  elif ! command -v qemu-system-x86_64 >/dev/null || ! command -v busybox >/dev/null ||
    [ ! -x "$virtiofsd" ]; then
    echo 'the emulator is not installed'
  elif [ ! -e "$emulator/vmlinuz" ]; then
    echo 'the kernel for the emulator is not installed'
  fi
}

write_init() {
  cat >"$1" <<'INIT'
#!/bin/busybox sh
/bin/busybox --install -s /bin
export PATH=/bin
mount -t proc proc /proc
mount -t devtmpfs dev /dev
for module in $(cat /modules/order); do insmod "/modules/$module.ko"; done
mount -t virtiofs root /machine || poweroff -f
# In base 64, since a path may contain blanks.
project=$(sed -n 's/.* project=\([^ ]*\).*/\1/p' /proc/cmdline | base64 -d)
# The next line hides /tmp and /run, and the project may be in one of them.
mount --bind "/machine$project" /project
for folder in tmp run; do mount -t tmpfs "$folder" "/machine/$folder"; done
mkdir -p "/machine$project"
mount --bind /project "/machine$project"
mount -t proc proc /machine/proc
mount -t sysfs sys /machine/sys
mount -t devtmpfs dev /machine/dev
mkdir -p /machine/dev/pts /machine/dev/shm
mount -t devpts pts /machine/dev/pts
mount -t tmpfs shm /machine/dev/shm
ip link set lo up
# The second serial line is the command's output; the first has the kernel's messages.
stty -F /dev/ttyS1 raw
emulator=$project/build/emulator
# Through cat, since some programs behave differently on a terminal.
{
  chroot /machine /bin/bash "$emulator/job" 2>&1 </dev/null
  echo $? >"/machine$emulator/status"
} | cat >/dev/ttyS1
sync
poweroff -f
INIT
  chmod +x "$1"
}

install_kernel() {
  [ ! -e "$emulator/vmlinuz" ] || return 0
  local package
  work=$(mktemp -d)
  trap 'rm -rf "$work"' EXIT
  chmod 755 "$work"
  # The package with the kernel itself: the other one only depends on it.
  package=$(apt-cache depends "$kernel_package" | sed -n 's/^ *Depends: \(linux-image\)/\1/p')
  (cd "$work" && apt-get download -q "$package" && dpkg -x "$package"_*.deb kernel)

  local image=$work/image module
  mkdir -p "$image"/{bin,dev,machine,modules,proc,project}
  cp /bin/busybox "$image/bin/"
  for module in "${modules[@]}"; do
    cp "$(find "$work/kernel" -path "*/$module.ko" | head -n 1)" "$image/modules/"
    printf '%s ' "${module##*/}" >>"$image/modules/order"
  done
  write_init "$image/init"
  mkdir -p "$emulator"
  (cd "$image" && find . | busybox cpio -o -H newc 2>/dev/null | gzip -1) >"$emulator/initrd"
  # Gets its name last: if it exists, the installation is complete.
  cp "$work"/kernel/boot/vmlinuz-* "$emulator/vmlinuz.new"
  mv "$emulator/vmlinuz.new" "$emulator/vmlinuz"
}

case "${1:-}" in
  --install)
    install_kernel
    exit
    ;;
  --check)
    why_not
    [ -z "$(why_not)" ]
    exit
    ;;
  --help)
    sed -n '2,/^set -/{/^set -/d;s/^# \{0,1\}//;p}' "$0"
    exit 0
    ;;
  '' | -*)
    sed -n '2,/^set -/{/^set -/d;s/^# \{0,1\}//;p}' "$0" >&2
    exit 2
    ;;
esac
if why=$(why_not) && [ -n "$why" ]; then
  printf 'emulate: %s\n' "$why" >&2
  exit 1
fi

exec 9>"$emulator/.running"
flock 9  # one run at a time: runs would share the files below
{
  printf 'cd %q\n' "$PWD"
  # A variable that is empty here is not set in the guest.
  for name in PATH HOME CI LANG WINEPREFIX WINEDEBUG WINEDLLOVERRIDES STEAM_STAND_IN; do
    [ -z "${!name:-}" ] || printf 'export %s=%q\n' "$name" "${!name}"
  done
  printf '%q ' "$@"
} >"$emulator/job"
rm -f "$emulator/status" "$emulator/files.socket"

"$virtiofsd" --socket-path="$emulator/files.socket" -o source=/ -o cache=always -o sandbox=chroot \
  >"$emulator/files.log" 2>&1 9>&- &
files=$!
trap 'kill "$files" 2>/dev/null || true' EXIT
until [ -S "$emulator/files.socket" ]; do
  if ! kill -0 "$files" 2>/dev/null; then
    printf 'emulate: virtiofsd did not start; see %s\n' "$emulator/files.log" >&2
    exit 1
  fi
  sleep 0.1
done

# smap=off: with it, QEMU faults where Wine returns to 32-bit code by IRET.
qemu-system-x86_64 -accel tcg,thread=multi -cpu max,smap=off,pku=off,la57=off -smp "$(nproc)" \
  -m 3G -object memory-backend-memfd,id=memory,size=3G,share=on -numa node,memdev=memory \
  -chardev socket,id=files,path="${emulator//,/,,}/files.socket" \
  -device vhost-user-fs-pci,chardev=files,tag=root \
  -kernel "$emulator/vmlinuz" -initrd "$emulator/initrd" \
  -append "console=ttyS0 quiet panic=-1 project=$(printf %s "$root" | base64 -w 0)" \
  -display none -vga none -net none -no-reboot \
  -serial "file:${emulator//,/,,}/console.log" -serial stdio -monitor none </dev/null 9>&-

if [ ! -e "$emulator/status" ]; then
  printf 'emulate: the guest ended early; see %s\n' "$emulator/console.log" >&2
  exit 1
fi
exit "$(cat "$emulator/status")"
