#!/bin/sh
# Installs the Debian packages in a clean root, runs the demo from their files, removes them, and
# compares what is left: clean_root.sh ROOT PACKAGES. As root; PACKAGES are built with the development
# keys, with which the demo signs; ROOT is one that debootstrap made and
# that may be thrown away, with gcc and pkg-config, or with a network to install them.
set -eu
root=$(cd "$1" && pwd)
packages=$(cd "$2" && pwd)
rm -rf "$root/tmp/packages"
mkdir "$root/tmp/packages"
cp "$packages"/*.deb "$root/tmp/packages"
cat >"$root/tmp/packages/try.sh" <<'TRY'
set -eu
cd /tmp/packages
DEBIAN_FRONTEND=noninteractive
LC_ALL=C
export DEBIAN_FRONTEND LC_ALL
files() {
    find / -xdev \( -path /proc -o -path /tmp/packages -o -path /var/lib/dpkg -o -path /var/log \
        -o -path /var/cache -o -path /var/lib/apt \) -prune -o -print | sort
}
installed() { dpkg-query -W -f '${db:Status-Abbrev} ${Package}\n' | sed -n 's/^ii *//p' | sort; }

command -v gcc >/dev/null && command -v pkg-config >/dev/null ||
    apt-get install -qq -y --no-install-recommends gcc libc6-dev pkg-config >/dev/null
files >before
installed >packages-before
apt-get install -qq -y --no-install-recommends ./*.deb >/dev/null
mkdir /var/lib/brevikconfig
brevikctl machine create
mkdir demo
/usr/share/brevikconfig/examples/demo.sh --installed demo
installed | comm -13 packages-before - >packages-new
apt-get purge -qq -y $(cat packages-new) >/dev/null
files | comm -3 before - | sed 's/^\t*//' | grep -v '^/var/lib/brevikconfig' >left || true
if [ -s left ]; then
    echo "left behind, or gone:"
    cat left
    exit 1
fi
echo "nothing is left but the machine folder"
TRY
# In a mount space of its own, which takes its mounts along when it ends.
unshare -m sh -c 'mount -t proc proc "$1/proc" && chroot "$1" sh /tmp/packages/try.sh' - "$root"
