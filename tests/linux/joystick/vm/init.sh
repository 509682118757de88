#!/bin/busybox sh
# What the virtual machine runs, in place of an init system.
/bin/busybox --install -s /bin
export PATH=/bin
mount -t proc proc /proc
mount -t sysfs sysfs /sys
mount -t devtmpfs devtmpfs /dev
insmod /uinput.ko
insmod /evdev.ko
stty -F /dev/ttyS1 raw
exec >/dev/ttyS1 2>&1 </dev/null

/uinput_readback

stty -F /dev/ttyS1 raw  # returns when all is sent
poweroff -f
