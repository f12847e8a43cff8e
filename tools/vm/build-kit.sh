#!/usr/bin/env bash
# Prepares the emulated machine that runs Wine where this host cannot run 32-bit code:
# a Debian kernel and a small busybox initramfs that mounts the host's root over 9p.
# The kit goes to $KORVALIN_VM_KIT (default /var/cache/wixkorvalin/vm); safe to rerun.
set -euo pipefail
here=$(cd "$(dirname "$0")" && pwd)
kit=${KORVALIN_VM_KIT:-/var/cache/wixkorvalin/vm}
[ -f "$kit/vmlinuz" ] && [ -f "$kit/initrd.gz" ] && [ "$kit/initrd.gz" -nt "$here/init" ] && exit 0

need=()
for pkg in qemu-system-x86 busybox-static kmod cpio; do
    dpkg-query -W -f='${Status}' "$pkg" 2>/dev/null | grep -q "install ok installed" || need+=("$pkg")
done
if [ ${#need[@]} -gt 0 ]; then
    DEBIAN_FRONTEND=noninteractive apt-get install -y -qq --no-install-recommends "${need[@]}"
fi

echo "vm: preparing the emulated machine in $kit"
mkdir -p "$kit"
scratch=$(mktemp -d)
trap 'rm -rf "$scratch"' EXIT
image=$(apt-cache depends linux-image-amd64 | sed -n 's/.*Depends: \(linux-image-[0-9].*\)/\1/p' | head -n 1)
(cd "$scratch" && apt-get download -qq "$image" 2>/dev/null)
dpkg -x "$scratch"/linux-image-*.deb "$scratch/k"
version=$(ls "$scratch/k/lib/modules")
/sbin/depmod -b "$scratch/k" "$version"
cp "$scratch/k/boot/vmlinuz-$version" "$kit/vmlinuz"

root="$scratch/initrd"
mods="$root/lib/modules/$version"
mkdir -p "$root/bin" "$root/newroot" "$root/proc" "$root/sys" "$root/dev" "$mods"
cp /bin/busybox "$root/bin/"
cp "$here/init" "$root/init"
chmod +x "$root/init"
for m in drivers/virtio/virtio drivers/virtio/virtio_ring drivers/virtio/virtio_pci_legacy_dev \
         drivers/virtio/virtio_pci_modern_dev drivers/virtio/virtio_pci net/9p/9pnet \
         net/9p/9pnet_virtio fs/fscache/fscache fs/netfs/netfs fs/9p/9p; do
    mkdir -p "$mods/kernel/$(dirname $m)"
    cp "$scratch/k/lib/modules/$version/kernel/$m.ko" "$mods/kernel/$m.ko"
done
cp "$scratch/k/lib/modules/$version/modules.dep" "$mods/"
(cd "$root" && find . | cpio -o -H newc 2>/dev/null | gzip -1 > "$kit/initrd.gz")
echo "vm: ready"
