# The virtual machine of the radio tests, in build/radio. It boots Debian's kernel with its Bluetooth
# stack, and shares this machine's /usr.

machine_packages=(qemu-system-x86 bluez bluez-test-tools dbus busybox-static cpio kmod)
modules=(drbg sha512_generic sha256_generic hmac virtio_pci 9pnet_virtio 9p ecdh_generic cmac
    algif_hash algif_skcipher ccm ctr aesni_intel bluetooth hci_vhci uhid)

# Unpacks the kernel once and creates the initial RAM file system, in build/radio.
prepare_machine() (
    set -e
    mkdir -p build/radio/share
    local guest=$PWD/tests/radio/guest
    cd build/radio
    local package
    package=$(apt-cache depends linux-image-amd64 | awk '/Depends: linux-image-6/ { print $2; exit }')
    local version=${package#linux-image-}
    if [ "$(cat version 2>/dev/null)" != "$version" ]; then
        rm -rf kernel ./*.deb
        apt-get download -qq "$package"
        dpkg-deb -x "$package"_*.deb kernel
        rm ./*.deb
        depmod -b kernel "$version"
        echo "$version" >version
    fi
    rm -rf root
    mkdir -p root/{proc,sys,dev,run,tmp,usr,share,modules,etc/dbus-1,etc/bluetooth,var/lib/dbus}
    mkdir -p root/var/lib/bluetooth
    cp /bin/busybox root/
    for folder in bin sbin lib lib64; do ln -s "usr/$folder" "root/$folder"; done
    cp -a /etc/dbus-1/. root/etc/dbus-1/
    cp -a /etc/alternatives /etc/ld.so.cache /etc/ld.so.conf root/etc/
    printf '%s\n' root:x:0:0::/root:/bin/sh messagebus:x:100:100::/:/bin/false \
        nobody:x:65534:65534::/:/bin/false >root/etc/passwd
    printf '%s\n' root:x:0: bluetooth:x:101: netdev:x:102: messagebus:x:100: lp:x:7: \
        nogroup:x:65534: >root/etc/group
    # Enables only low energy and one ATT channel. One daemon manages both ends of each link: with
    # more ATT channels it would connect to itself.
    sed 's/^#*ControllerMode.*/ControllerMode = le/; s/^#*Channels.*/Channels = 1/' \
        /etc/bluetooth/main.conf >root/etc/bluetooth/main.conf
    for module in "${modules[@]}"; do
        modprobe -d kernel -S "$version" --show-depends "$module" 2>/dev/null || true
    done | awk '/^insmod/ && !seen[$2]++ { print $2 }' >modules
    while read -r file; do
        cp "$file" root/modules/
        basename "$file"
    done <modules >root/modules/list
    cp "$guest/init" root/init
    chmod +x root/init
    (cd root && find . | cpio -o -H newc --quiet | gzip -1) >root.gz
)

# boot_machine <seconds> <argument> boots the virtual machine, which runs the tests, and prints its output.
# The machine's clock counts one nanosecond per instruction and follows real time only while the
# machine waits. So load outside the machine cannot cause a timeout inside it.
boot_machine() {
    local folder=build/radio
    printf '%s' "$2" >"$folder/share/arguments"
    printf '%s' "${ORV_SEED:-$RANDOM}" >"$folder/share/seed"
    timeout "$1" qemu-system-x86_64 -accel tcg,thread=single -icount shift=0,sleep=on \
        -cpu max -machine q35 -smp 1 -m 1024 -display none -serial stdio -monitor none -nic none -no-reboot \
        -kernel "$folder/kernel/boot/vmlinuz-$(cat $folder/version)" -initrd "$folder/root.gz" \
        -append "console=ttyS0 quiet panic=-1 mitigations=off nokaslr" \
        -virtfs local,path=/usr,mount_tag=usr,security_model=none,readonly=on \
        -virtfs "local,path=$folder/share,mount_tag=share,security_model=none" </dev/null 2>&1 |
        sed -u 's|\r||g'
}
