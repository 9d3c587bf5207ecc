# "$1/http_server" answers several clients at a time and is not held up; "$1/http_get" reads bodies of every kind, and
# tells when something is missing.
set -euo pipefail
programs=$1 folder=$(mktemp -d) ids=()
trap 'kill "${ids[@]}" 2>/dev/null || true; rm -r "$folder"' EXIT
trap '' PIPE  # the server may hang up while this writes
fail() {
    echo "$1"
    exit 1
}
start_server() { # connections seconds
    exec {server}< <(exec "$programs/http_server" 0 "$@")
    ids+=($!)
    read -r -t 30 line <&"$server"
    port=${line##* }
}
connect() {
    exec {client}<>"/dev/tcp/127.0.0.1/$port"
}
expect() { # what expected got
    [[ $2 == "$3" ]] || fail "$1: got '$3' instead of '$2'"
}
# All that comes back, up to the end, without dates and carriage returns.
expect_answer() { # what expected
    expect "$1" "$2" "$(timeout 30 cat <&"$client" | tr -d '\r' | grep -v ^Date:)"
    exec {client}>&-
}

start_server 14 30
get() { "$programs/http_get" 127.0.0.1 "$port" "$1"; }

# As many as there are threads but one send half a request and hold up nobody.
held=()
for i in 1 2 3 4 5 6 7; do
    connect
    printf 'GET /query?a=%s HTTP/1.1\r\nHost: h\r' "$i" >&"$client"
    held+=("$client")
done
seq 100000 >"$folder/numbers"
get "/count?to=100000" | cmp - "$folder/numbers"
expect query $'a = b c\nd = A&' "$(get "/query?a=b+c&d=%41%26&=x")"
for path in /none /count "/count?to=x" "/count?to=1000001" "/count?to=18446744073709551617"; do
    ! get "$path" >"$folder/body" || fail "$path was found"
    [[ ! -s $folder/body ]] || fail "$path has a body"
done
ok=$'HTTP/1.1 200 OK\nContent-Type: text/plain\n' close=$'Connection: close\n'
for i in "${!held[@]}"; do
    client=${held[i]}
    printf '\nConnection: close\r\n\r\n' >&"$client"
    expect_answer "two pieces" "$ok$close"$'Content-Length: 6\n\na = '"$((i + 1))"
done
wait "${ids[0]}"

# One connection for several requests, until one of them ends it; what follows that one is not looked at.
start_server 9 30
connect
printf '%s\r\n' "GET /query?a=b HTTP/1.1" "" "GET /count?to=3 HTTP/1.1" "connection: Close" "" GET GET >&"$client"
expect_answer keep-alive "$ok"$'Content-Length: 6\n\na = b\n'"$ok$close"$'Transfer-Encoding: chunked\n\n6\n1\n2\n3\n\n0'
bad=$'HTTP/1.1 400 Bad Request\nContent-Type: text/plain\n'"$close"'Content-Length: 0'
requests=("GET /count?to=3 HTTP/1.0\r\n\r\n" "GET /query?a=b\r\n" "GET\r\n\r\n" "GET / HTTP/1.1\r\n a\r\n\r\n"
    "POST /query HTTP/1.1\r\nContent-Length: 5\r\n\r\nGET /")
expected=("$ok$close"$'\n1\n2\n3' "a = b" "$bad" "$bad" "${bad/400 Bad Request/405 Method Not Allowed}")
expected[4]=${expected[4]/Connection/$'Allow: GET\nConnection'}
for i in "${!requests[@]}"; do
    connect
    printf "${requests[i]}" >&"$client"
    expect_answer "${requests[i]}" "${expected[i]}"
done
if command -v curl >/dev/null; then
    url=http://127.0.0.1:$port/query?a=b
    curl -sS0 -m 30 "http://127.0.0.1:$port/count?to=100000" | cmp - "$folder/numbers"
    expect curl $'a = b\n1\na = b\n0' "$(curl -sS -m 30 -w '%{num_connects}\n' "$url" "$url")"
fi
kill "${ids[1]}"

# What a server can answer, good and bad, once it has read the request.
answer_with() { # answer
    printf "$1" >"$folder/answer"
    exec {server}< <(exec socat -d -d TCP-LISTEN:0,bind=127.0.0.1 SYSTEM:"sed -u '/^.\$/q' >'$folder/request'; cat '$folder/answer'" 2>&1)
    ids+=($!)
    while read -r -t 30 line <&"$server" && [[ $line != *listening* ]]; do :; done
    port=${line##*:}
}
head="HTTP/1.1 200 OK\r\n"
while command -v socat >/dev/null && IFS='|' read -r expected body answer; do
    answer_with "$answer"
    status=0
    got=$(get /) || status=$?
    expect "$answer" "$expected $body" "$status $got"
done <<END
0|abc|HTTP/1.0 200 OK\r\n\r\nabc
0|abc|${head}content-length: 3\r\n\r\nabcd
0|abcde|${head}Transfer-Encoding: chunked\r\n\r\n3;x=y\r\nabc\r\n2\r\nde\r\n0\r\nA: b\r\n\r\n
0||${head}Transfer-Encoding: chunked\r\n\r\n0\r\n\r\n
0||HTTP/1.1 204 No Content\r\n\r\nabc
0|abc|HTTP/1.1 103 Early\r\nLink: x\r\n\r\n${head}Content-Length: 3\r\n\r\nabc
1|abc|HTTP/1.1 500 x\r\nContent-Length: 3\r\n\r\nabc
1|abc|${head}Content-Length: 4\r\n\r\nabc
1||${head}Content-Length: 18446744073709551617\r\n\r\nabc
1||${head}Content-Length: -1\r\n\r\nabc
1||${head}Transfer-Encoding: chunked\r\n\r\n3\r\nabc\r\n
1||${head}Transfer-Encoding: gzip, chunked\r\n\r\n3\r\nabc\r\n0\r\n\r\n
1||${head}A: b\r\n
1||${head}no header\r\n\r\nabc
1||
END
request=$'GET / HTTP/1.1\r\nConnection: close\r\nHost: 127.0.0.1:'"$port"$'\r\n\r'
! command -v socat >/dev/null || expect request "$request" "$(<"$folder/request")"

# A byte now and then does not keep a connection open.
start_server 1 1
connect
for ((i = 0; i < 300; ++i)); do
    printf . >&"$client" || break
    status=0
    read -r -t 0.1 <&"$client" || status=$?
    ((status > 128)) || break
done
((i < 300)) || fail "a client that trickles holds the server"
exec {client}>&-
wait "${ids[-1]}"

for command in http_server "http_server port" "http_get 127.0.0.1 80" "http_get 127.0.0.1 80 none"; do
    status=0
    "$programs/"$command 2>/dev/null || status=$?
    ((status == 2)) || fail "$command did not tell its usage"
done
! "$programs/http_get" 127.0.0.1 80 $'/a HTTP/1.1\r\nHost: x' 2>/dev/null || fail "a path became a header"
