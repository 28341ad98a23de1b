#!/usr/bin/env bash
# Tries the last commit on an empty Debian 12, which has nothing but what the project's own scripts
# install there.
#
#   scripts/try_on_blank_debian.sh [--keep] [--user] [--folder FOLDER] [COMMAND...]
#
#   COMMAND   each is run by bash in a fresh clone of the project; scripts/demo.sh and
#             scripts/test.sh if none is given
#   --keep    do not delete the system at the end
#   --user    run them as an ordinary user who may use sudo, not as root
#   --folder  where to put the system; build/blank-debian by default
#
# Needs root. The packages come from this machine's apt sources, with its apt configuration. The empty
# system is kept in FOLDER.tar for the next time. Mounts and processes are in separate namespaces, so
# the kernel removes them, however the script ends. Exit status: 0 if all commands passed.
set -euo pipefail

release=bookworm
project=/srv/project
root=$(cd "$(dirname "${BASH_SOURCE[0]}")/.." && pwd)
folder=$root/build/blank-debian
keep=
user=

say() { printf 'blank: %s\n' "$*"; }
fail() {
  printf 'blank: %s\n' "$*" >&2
  exit 1
}

while [ $# -gt 0 ]; do
  case $1 in
    --keep) keep=yes ;;
    --user) user=tester ;;
    --folder)
      folder=$(realpath -m "${2:?a folder}")
      shift
      ;;
    -*)
      sed -n '2,/^set -/{/^set -/d;s/^# \{0,1\}//;p}' "$0"
      [ "$1" = --help ] && exit 0
      exit 2
      ;;
    *) break ;;
  esac
  shift
done
commands=("$@")
[ $# -gt 0 ] || commands=(scripts/demo.sh scripts/test.sh)

[ "$(id -u)" -eq 0 ] || fail 'this needs root'
for tool in debootstrap git; do
  command -v "$tool" >/dev/null || fail "$tool is not installed: run scripts/setup.sh blank"
done
mark=$folder/.blank-debian
if [ -e "$folder" ] && [ ! -e "$mark" ]; then fail "$folder exists and is not from this script"; fi

# Runs a command in new namespaces: its mounts and processes end with it. It runs in the background,
# so that a signal ends this script at once.
child=
apart() {
  local status=0
  unshare --mount --pid --fork --kill-child --propagation private -- "$@" </dev/null &
  child=$!
  wait "$child" || status=$?
  child=
  return "$status"
}

# Runs a command in the empty system.
inside() {
  local settings=(HOME=/root PATH=/usr/sbin:/usr/bin:/sbin:/bin) name
  for name in TERM http_proxy https_proxy no_proxy; do
    [ -z "${!name:-}" ] || settings+=("$name=${!name}")
  done
  # shellcheck disable=SC2016  # the arguments of the inner shell
  apart bash -euc 'system=$1
    shift
    mount -t proc proc "$system/proc"
    mount --rbind /dev "$system/dev"
    mount -t tmpfs -o mode=1777 shm "$system/dev/shm"
    mount -t tmpfs -o mode=1777 tmp "$system/tmp"
    chroot "$system" env -i "$@" || exit "$?"' bash "$folder" "${settings[@]}" "$@"
}

# shellcheck disable=SC2317  # the trap calls it
clean_up() {
  [ -z "$child" ] || kill -KILL "$child"
  rm -f "$folder.tar.new"
  if [ -n "$keep" ]; then
    say "kept: $folder"
  else
    rm -rf --one-file-system "$folder"
  fi
}

rm -rf --one-file-system "$folder"
trap clean_up EXIT
mkdir -p "$folder"
touch "$mark"
if [ ! -e "$folder.tar" ]; then
  # shellcheck disable=SC2016  # apt-get's own variables
  mirror=$(apt-get indextargets --format '$(SITE)' 'Created-By: Packages' "Codename: $release" |
    head -n 1)
  [ -n "$mirror" ] || fail "this machine's apt has no source for $release"
  say "making an empty Debian 12 from $mirror"
  apart debootstrap --variant=minbase "$release" "$folder" "$mirror" >"$folder.log" ||
    fail "debootstrap failed; see $folder.log"
  tar -C "$folder" --one-file-system -cf "$folder.tar.new" .
  mv "$folder.tar.new" "$folder.tar"
else
  tar -C "$folder" -xf "$folder.tar"
fi

rm -r "$folder/etc/apt"
cp -a /etc/apt "$folder/etc/"
cp -L /etc/hosts /etc/resolv.conf "$folder/etc/"
git clone -q --no-local "$root" "$folder$project"
git -C "$folder$project" checkout -q --detach "$(git -C "$root" rev-parse HEAD)"
as_user=()
if [ -n "$user" ]; then
  inside bash -euc "apt-get -qq update
    DEBIAN_FRONTEND=noninteractive apt-get -qqy install --no-install-recommends sudo >/dev/null 2>&1
    useradd --create-home --shell /bin/bash $user
    echo '$user ALL=(ALL) NOPASSWD: ALL' >/etc/sudoers.d/$user
    chown -R $user: $project"
  as_user=(setpriv "--reuid=$user" "--regid=$user" --init-groups env "HOME=/home/$user" "USER=$user")
fi

failed=0
results=()
for command in "${commands[@]}"; do
  say "running${user:+ as an ordinary user}: $command"
  began=$SECONDS
  status=0
  inside "${as_user[@]}" bash -c "cd $project && $command" || status=$?
  results+=("exit status $status after $((SECONDS - began)) s: $command")
  [ "$status" -eq 0 ] || failed=$((failed + 1))
done
for result in "${results[@]}"; do say "$result"; done
[ "$failed" -eq 0 ]
