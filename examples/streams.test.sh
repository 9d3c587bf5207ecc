# "$1/echo_server" sends lines back and is not held up, "$1/base64" does what the system's base64 does.
set -euo pipefail
programs=$1 folder=$(mktemp -d) server_id=
trap 'kill $server_id 2>/dev/null || true; rm -r "$folder"' EXIT
trap '' PIPE  # the server may hang up while this writes
fail() {
    echo "$1"
    exit 1
}
start_server() {
    exec {server}< <(exec "$programs/echo_server" 0 "$@")
    server_id=$!
    read -r -t 30 line <&"$server"
    port=${line##* }
}
end_server() {
    wait "$server_id"
    server_id=
}
expect_line() {
    IFS= read -r -t 30 line <&"$client" || line=nothing
    [[ $line == "$1" ]] || fail "got '$line' instead of '$1'"
}
# No line within a tenth of a second: true; false at the end of the connection.
is_open() {
    local status=0
    read -r -t "${1:-0.1}" <&"$client" || status=$?
    ((status > 128))
}
expect_end() {
    ! is_open 30 || fail "$1 holds the server"
}

# Lines come back with their ends, whatever pieces they arrive in; one that is too long ends the connection.
start_server 2
exec {client}<>"/dev/tcp/127.0.0.1/$port"
printf 'hel' >&"$client"
printf 'lo\n\n  two words\r\n' >&"$client"
expect_line hello
expect_line ""
expect_line $'  two words\r'
exec {client}>&-
exec {client}<>"/dev/tcp/127.0.0.1/$port"
printf '%04095d\n' 7 >&"$client"
expect_line "$(printf '%04095d' 7)"
printf '%05000d' 7 >&"$client"
expect_end "a long line"
exec {client}>&-
end_server

# A byte now and then does not keep a connection open.
start_server 1 1
exec {client}<>"/dev/tcp/127.0.0.1/$port"
for ((i = 0; i < 300; ++i)); do
    printf . >&"$client" || true
    is_open || break
done
((i < 300)) || fail "a client that trickles holds the server"
end_server

bytes=$folder/bytes text=$folder/text
for size in 0 1 2 3 56 57 58 113 114 115 16384 100001; do
    head -c "$size" /dev/urandom >"$bytes"
    base64 -w 76 "$bytes" >"$text"
    "$programs/base64" <"$bytes" | cmp - "$text"
    "$programs/base64" -d <"$text" | cmp - "$bytes"
done
[[ $(printf 'T W*F\r\nu-TQ==TWFu' | "$programs/base64" -d) == ManM ]] || fail "bad Base64 is not skipped"

# Failures are told, also of what leaves the last buffer only.
echo TQ== >"$bytes"
for arguments in "" -d; do
    for file in "$bytes" "$text"; do
        ! "$programs/base64" $arguments <"$file" >/dev/full || fail "base64 $arguments wrote to a full device"
    done
    ! "$programs/base64" $arguments <"$folder" >/dev/null 2>&1 || fail "base64 $arguments read a folder"
done
for command in "base64 -w" "echo_server" "echo_server port"; do
    status=0
    "$programs/"$command 2>/dev/null || status=$?
    ((status == 2)) || fail "$command did not tell its usage"
done
