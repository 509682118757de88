#!/usr/bin/env bash
# uinput_test.sh UINPUT_REPORT EVREAD SDLREAD
#
# Plays reports into the joystick in a virtual machine and compares what evdev, joydev and SDL read
# back with what they should. Exit status: 0 all is right, 1 something is not, 77 there can be no
# virtual machine here.
set -u
here=$(cd "$(dirname "$0")" && pwd)
for program in "$1" "$2" "$3"; do
    [ -x "$program" ] || { echo "$program is missing"; exit 1; }
done
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT

VM_MARKERS=0 "$here/run-in-vm.sh" "$here/vm_script.sh" \
    "$1=/t/uinput_report" "$2=/t/evread" "$3=/t/sdlread" >"$work/seen" 2>"$work/messages"
status=$?

# 125: no virtual machine, or one that failed. When the script had already spoken, that is no
# reason to skip.
if [ $status = 125 ] && [ ! -s "$work/seen" ]; then
    echo "no virtual machine: $(tail -n 1 "$work/messages")"
    exit 77
fi
if [ $status != 0 ]; then
    echo "the virtual machine ended with status $status:"
    cat "$work/messages"
fi
if diff -u --label expected "$here/vm_expected.txt" --label seen "$work/seen" && [ $status = 0 ]; then
    echo "evdev, joydev and SDL read every report as they should"
    exit 0
fi
exit 1
