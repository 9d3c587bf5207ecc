# What "$1/web_server" says to curl.
set -euo pipefail
folder=$(mktemp -d)
mkfifo "$folder/keys"
mkdir "$folder/www"
echo hello >"$folder/www/index.html"
exec {server}< <(exec "$1/web_server" "$folder/www" 0 <"$folder/keys")
id=$!
exec {keys}>"$folder/keys"
trap 'kill "$id" 2>/dev/null || true; rm -r "$folder"' EXIT
read -r -t 30 url rest <&"$server"

get() { curl -s --max-time 30 "$@"; }
expect() { # expected got
    [[ $1 == "$2" ]] || { echo "got '$2' instead of '$1'"; exit 1; }
}
expect hello "$(get "$url")"
get -d 1.5 "${url}api/points/7"
expect 1.500000 "$(get "${url}api/points/7")"
expect 303 "$(get -d value=3 -o /dev/null -w '%{http_code}' "${url}form")"
expect 1150 "$(get "${url}favicon.ico" | wc -c)"
expect 'varnex_http_replies_total{code="2xx"} 4' "$(get "${url}metrics" | grep '"2xx"')"
echo >&"$keys"
wait "$id"
