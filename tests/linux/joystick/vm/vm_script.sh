# Runs in the virtual machine, as root, under busybox's sh: plays reports into the joystick and
# prints what each reader makes of them. The programs stand in /t.
cd /t

# start NAME COMMAND...: starts a program that reads lines from NAME.in and answers on NAME.out.
start() {
    name=$1; shift
    rm -f "$name.in" "$name.out"; mkfifo "$name.in" "$name.out"
    # without the others' pipes, which would keep them from ending with this script's end of them
    "$@" <"$name.in" >"$name.out" 2>&1 3>&- 4>&- 5>&- 6>&- 7>&- 8>&- &
    pid=$!
}
# answers FD N: the next N lines.
answers() {
    for i in $(seq "$2"); do
        line="(no answer)"; IFS= read -r -t 20 line <&"$1"; echo "$line"
    done
}
# ask FD-IN FD-OUT LINE N: the N lines that answer the line.
ask() { echo "$3" >&"$1"; answers "$2" "$4"; }
has_joystick() { grep -q 'Name="Quillorbit"' /proc/bus/input/devices; }

# report WHAT: sends it and prints what everybody sees.
report() {
    echo "[$1] $(ask 3 4 "$1" 1)"
    ask 5 6 state 2
    ask 7 8 state 1
}

has_joystick && echo "a joystick before the start"
start program ./uinput_report
program=$pid; exec 3>program.in 4<program.out
answers 4 1
handlers=$(grep -A 4 'Name="Quillorbit"' /proc/bus/input/devices | grep Handlers)
event=$(echo "$handlers" | grep -oE 'event[0-9]+')
js=$(echo "$handlers" | grep -oE 'js[0-9]+')

start kernel ./evread "/dev/input/$event" "/dev/input/$js"
exec 5>kernel.in 6<kernel.out
answers 6 7
start sdl ./sdlread
exec 7>sdl.in 8<sdl.out
answers 8 1
echo "[start]"
ask 5 6 state 2
ask 7 8 state 1

report "0 0 0 0 0"
report "150 150 150 150 0"
report "75 75 75 75 0"
report "74 76 1 149 0"
report "-1 151 -32768 32767 0"
report "0 150 0 150 0"
report "0 150 0 150 1"
report "0 150 0 150 0x8000"
report "0 150 0 150 0x10000"
report "0 150 0 150 0x80000000"
report "0 150 0 150 0x5"
report "control 101 12"
report "control 100 11"
report "control 100 13"
report "75 75 75 75 0"
echo "[all buttons] $(ask 3 4 "75 75 75 75 0xFFFFFFFF" 1)"
ask 7 8 state 1

echo "[a second program]"
./uinput_report </dev/null 2>&1
grep -c 'Name="Quillorbit"' /proc/bus/input/devices

echo "[closed]"
exec 3>&-
wait "$program"
has_joystick || echo "no joystick"
ask 7 8 removed 1
exec 5>&- 7>&-
wait        # or the readers' end would interrupt the opening of the next pipe

echo "[killed]"
start program ./uinput_report
program=$pid; exec 3>program.in 4<program.out
answers 4 1
has_joystick && echo "a joystick"
kill -9 "$program"; wait "$program" 2>/dev/null
has_joystick || echo "no joystick"
exec 3>&-

echo "[not permitted]"
echo 'player:x:1000:1000::/tmp:/bin/sh' >>/etc/passwd
su player -c ./uinput_report </dev/null 2>&1
echo "[permitted]"
chmod 666 /dev/uinput
su player -c ./uinput_report </dev/null 2>&1
echo "[module not loaded]"
rmmod uinput
./uinput_report </dev/null 2>&1
exit 0
