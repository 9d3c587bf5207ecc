# "$1/counter_host" knows "counter:" URLs, "$1/open_url" reads URLs of any kind in three ways, and fewer of strangers.
set -euo pipefail
programs=$1 folder=$(cd "$(mktemp -d)" && pwd -P)
trap 'rm -r "$folder"' EXIT
fail() {
    echo "$1"
    exit 1
}

# A scheme in C: absolute, relative and bad.
text=$("$programs/counter_host" counter:2 +1 0 " COUNTER:1 ")
[[ $text == $'counter:2: text/plain, 4 bytes\n1\n2\ncounter:3: text/plain, 6 bytes\n1\n2\n3
counter:0: text/plain, 0 bytes\ncounter:1: text/plain, 2 bytes\n1' ]] || fail "counter_host printed '$text'"
for url in counter: counter:x counter:5x counter:-1 counter:+1 counter:1000000 counter:99999999999999999999; do
    ! "$programs/counter_host" "$url" 2>/dev/null || fail "counter_host opened $url"
done
! "$programs/counter_host" counter:999999 +1 >/dev/null 2>&1 || fail "counter_host counted too far"

# Every kind of URL, read in every way.
seq 999999 >"$folder/a b.x3d"
(cd "$folder" && cmake -E tar cf all.zip --format=zip "a b.x3d")
opens_as() { # type url: the numbers, which are of that type
    local way
    for way in "" --memory --disk; do
        "$programs/open_url" $way "$2" 2>"$folder/type" | cmp - "$folder/a b.x3d" || fail "open_url $way $2"
        [[ $(<"$folder/type") == "$1, 6888888 bytes" ]] || fail "open_url $way $2 told $(<"$folder/type")"
    done
}
cd "$folder"
opens_as text/plain counter:999999
opens_as model/x3d+xml "a b.x3d"
opens_as model/x3d+xml "file://localhost$folder/a%20b.x3d#part"
opens_as model/x3d+xml "zip:all.zip!/a%20b.x3d"
[[ $("$programs/open_url" "data:,a%20b" 2>&1) == $'text/plain, 3 bytes\na b' ]] || fail "data: URL"

# What breaks on the way is told.
{
    head -c 1000000 all.zip
    printf broken
    tail -c +1000007 all.zip
} >broken.zip
for way in "" --memory --disk; do
    ! "$programs/open_url" $way "zip:broken.zip!/a b.x3d" >/dev/null 2>&1 || fail "open_url $way took a broken archive"
    ! "$programs/open_url" $way "a b.x3d" 2>/dev/null >/dev/full || fail "open_url $way wrote to a full device"
done

# Strangers see one folder, and neither this machine nor a scheme that was not named.
mkdir open
cp "a b.x3d" all.zip open
ln -s ../all.zip open/link.zip
head -c 17000000 /dev/zero >open/large
for url in "open/a b.x3d" "file://$folder/open/a b.x3d" "zip:open/all.zip!/a b.x3d" data:,x; do
    "$programs/open_url" --policy open "$url" >/dev/null 2>&1 || fail "the policy refuses $url"
done
for url in "a b.x3d" open/link.zip "zip:open/link.zip!/a b.x3d" "open/../a b.x3d" /etc/passwd file://server/etc/passwd \
    open/large counter:1 "zip:counter:1!/a" http://127.1/ http://localhost/ "http://[::1]/"; do
    ! "$programs/open_url" --policy open "$url" >/dev/null 2>&1 || fail "the policy allows $url"
done

for command in counter_host open_url "open_url a b" "open_url --policy ."; do
    status=0
    "$programs/"$command 2>/dev/null || status=$?
    ((status == 2)) || fail "$command did not tell its usage"
done
