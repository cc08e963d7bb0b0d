#!/usr/bin/env bash
# SPDX-License-Identifier: MIT
# Shows, on the simulator's built-in bench and through the command-line tool alone, what the project does.
# Every step is checked: the script ends with an error if one of them fails.
#
# Usage: demo.sh <path of sondixqt>
set -euo pipefail
unset SONDIX_BENCH # the built-in bench, whatever the caller has set

tool=$1
work=$(mktemp -d)
tunnel=
trap '[[ -z $tunnel ]] || kill $tunnel; rm -rf "$work"' EXIT
trap 'exit 130' INT TERM
begun=$SECONDS

bold= plain=
if [[ -t 1 && -z ${NO_COLOR:-} && ${TERM:-dumb} != dumb ]]; then
    bold=$'\e[1m' plain=$'\e[0m'
fi

title() { printf '\n%s== %s%s\n' "$bold" "$*" "$plain"; }
say() { printf '%s\n' "$@"; }
fail() {
    printf 'demo: FAILED: %s\n' "$*" >&2
    exit 1
}

show() { printf '\n%s$ sondixqt %s%s\n' "$bold" "$*" "$plain"; }

# run <argument>...: shows the command and runs it.
run() {
    show "$@"
    "$tool" "$@" || fail "it ended with exit code $?"
}

# run_and_keep <argument>...: like run; also writes the output to $work/out.
run_and_keep() {
    show "$@"
    "$tool" "$@" | tee "$work/out" || fail "it did not succeed"
}

# run_failing <exit code> <argument>...: runs a command that must fail; also writes its messages to $work/err.
run_failing() {
    local expected=$1 code=0
    shift
    show "$@"
    "$tool" "$@" 2>"$work/err" || code=$?
    cat "$work/err" >&2
    [[ $code -eq $expected ]] || fail "it ended with exit code $code instead of $expected"
}

# address_of <serial number>: prints the last column of the line for this sensor in the search results.
address_of() {
    awk -v serial="$1" '{ for (i = 1; i < NF; ++i) if ($i == serial) { print $NF; exit } }' "$work/found"
}

title "What you are about to see"
say "Factories measure distances, thicknesses and colours to a thousandth of a millimetre with" \
    "sensors that are connected by serial lines, USB, interface cards or the network. SondixQt is a library" \
    "that finds such sensors, opens them and reads them; 'sondixqt' is its command-line tool." \
    "No sensor is needed here: a simulator stands in for a laboratory full of them, behind the same" \
    "interface as the real ones."

title "1. Which sensors are there?"
say "A few searches over all seven kinds of interface find every model, also the sensors that share a" \
    "line or a converter as a bus and those that are read as one. Each sensor is printed as soon as it" \
    "answers: its interface and place, its model, its serial number and the address that opens it."
search_begun=$SECONDS
run_and_keep find
search_took=$((SECONDS - search_begun))
[[ $search_took -lt 20 ]] || fail "the search took $search_took seconds"
cp "$work/out" "$work/found"

for interface in RS232 Ethernet USB XA100/USB XA100/PCI XA200/PCI XA200/ETH; do
    grep -q "^$interface " "$work/found" || fail "no sensor was found on $interface"
done
count=$(wc -l <"$work/found")
[[ $count -eq 25 ]] || fail "$count sensors were found instead of 25"
grep -q ' MULTI_SENSOR ' "$work/found" || fail "the sensors that are read as one were not found"
say "" "$count sensors in $search_took seconds; '--thorough' searches each family of models separately."
laser=$(address_of 1018001)
confocal=$(address_of 2421018)
tracker=$(address_of 7160214)
bus=$(address_of 3330019)
[[ -n $laser && -n $confocal && -n $tracker && -n $bus ]] || fail "a sensor of the built-in bench was not found"

title "2. What are they, and what do they send?"
say "When a sensor is opened it reports its identity, its settings and the values of a data frame." \
    "A confocal distance sensor in the network:"
run_and_keep info "$confocal"
grep -q 'sample rate 1 kHz' "$work/out" || fail "the sample rate is missing"
grep -q '01INTENSITY1 *0 .. 100 %' "$work/out" || fail "the second value of the frame is not described"
say "" "A long-range laser on a serial line, and an inclinometer on a bus (only their data frames are shown):"
for address in "$tracker" "$bus"; do
    "$tool" info "$address" >"$work/out" || fail "$address could not be opened"
    printf '\n%s$ sondixqt info %s%s\n' "$bold" "$address" "$plain"
    sed -n '/^Data frame/,$p' "$work/out" | grep . || fail "$address does not describe its data"
    grep -q 'sample rate [0-9.]* kHz' "$work/out" || fail "$address does not report its sample rate"
done

title "3. What do they measure?"
say "The long-range laser measures ten times a second. Its values of two seconds, as they arrive:"
run read "$tracker" -n 20
say "" "The laser on COM3 measures 2000 times a second. Three seconds of it go into a CSV file. Now and" \
    "then it sees no target: such values are errors and are printed as texts, never as distances."
run read "$laser" --duration 3 --csv "$work/values.csv"
rows=$(($(wc -l <"$work/values.csv") - 1))
errors=$(awk -F, 'NR > 1 && $2 ~ /^[A-Z]/' "$work/values.csv" | wc -l)
[[ $rows -ge 5500 ]] || fail "only $rows rows were written"
[[ $errors -gt 0 ]] || fail "no error value was among them"
say "" "The first lines of the file and the first error in it:"
head -n 4 "$work/values.csv"
say "..."
awk -F, 'NR > 1 && $2 ~ /^[A-Z]/ { print before; print; exit } { before = $0 }' "$work/values.csv"

title "4. What does its web interface show?"
say "That laser serves web pages, and a browser reaches them through a tunnel. Ctrl-C ends the tunnel:"
show tunnel "$laser"
exec 3< <(exec "$tool" tunnel "$laser" 2>"$work/requests")
tunnel=$!
read -r -t 10 url <&3 || fail "the tunnel has no address"
exec 3<&-
say "$url" "" "What a browser gets there (status, title):"
exec 3<>"/dev/tcp/127.0.0.1/${url##*:}"
printf 'GET / HTTP/1.1\r\nHost: %s\r\nConnection: close\r\n\r\n' "${url#http://}" >&3
cat <&3 >"$work/page"
exec 3>&-
head -n 1 "$work/page" | tr -d '\r'
grep '<title>' "$work/page" || fail "the page has no title"
grep -q '^HTTP/1.1 200 OK' "$work/page" || fail "the page was not served"
kill -INT $tunnel
code=0
wait $tunnel || code=$?
cat "$work/requests" >&2
[[ $code -eq 130 ]] || fail "the tunnel ended with exit code $code instead of 130"
tunnel=

title "5. And when something is wrong?"
say "The tool prints one sentence, and scripts get an exit code. A model that does not exist:"
run_failing 2 find --type TX271
grep -q "did you mean" "$work/err" || fail "nothing was suggested"
say "(exit code 2: wrong usage)" "" "A sensor that does not answer:"
run_failing 4 info TX270@RS232,port=COM17,baudrate=115200
grep -q "cannot open" "$work/err" || fail "the message does not say that the sensor cannot be opened"
say "(exit code 4: cannot be opened)"

title "6. The sensors are closed"
say "Each command closes its sensor at the end, so that the next one can open it:"
run read "$laser" -n 3

title "Done in $((SECONDS - begun)) seconds: $count sensors found, 4 opened, $rows frames written, $errors errors among them."
say "'build/dev/bin/sondixqt --help' and README.md describe the rest."
