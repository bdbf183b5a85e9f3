#!/usr/bin/env bash
# A PostgreSQL cluster for one user's trials: in a folder of its own, on a socket there, reachable
# from nowhere else. Works as root too, who may not run PostgreSQL: nobody does then.
#
#   private_postgres.sh start           prints the cluster's folder, which is the socket's too
#   private_postgres.sh crash FOLDER    a stop that is as hard as a power cut
#   private_postgres.sh restart FOLDER  the same, and starts again
#   private_postgres.sh stop FOLDER     and removes it
#   private_postgres.sh tls FOLDER ADDRESS OTHER...
#                                       also listens there, with passwords and a certificate for
#                                       the first address; its authority is FOLDER/root.crt
#
# "psql -h FOLDER postgres tenora" is then its owner's connection.
set -eu
programs=$(printf '%s\n' /usr/lib/postgresql/*/bin | sort -V | tail -n 1)
if [ ! -x "$programs/initdb" ]; then
  echo "PostgreSQL's server is not installed (Debian: postgresql)" >&2
  exit 1
fi
as_nobody() {
  if [ "$(id -u)" = 0 ]; then
    setpriv --reuid nobody --regid nogroup --clear-groups env HOME=/nonexistent "$@"
  else
    "$@"
  fi
}
server() {
  as_nobody "$programs/pg_ctl" -D "$1/data" -s -w -l "$1/log" \
    -o "-c listen_addresses=$(cat "$1/addresses" 2>/dev/null || true) -c unix_socket_directories=$1 -c fsync=${PRIVATE_POSTGRES_FSYNC:-off}" "${@:2}"
}
cd /
case ${1:-} in
  start)
    folder=$(mktemp -d "${TMPDIR:-/tmp}/tenora-postgres-XXXXXX")
    if [ "$(id -u)" = 0 ]; then chown nobody:nogroup "$folder"; fi
    as_nobody "$programs/initdb" -D "$folder/data" -A trust -U tenora -E UTF8 --locale=C.UTF-8 -N >"$folder.out" 2>&1 ||
      { cat "$folder.out" >&2; exit 1; }
    rm "$folder.out"
    server "$folder" start >&2
    echo "$folder"
    ;;
  crash)
    server "$2" -m immediate stop >&2
    ;;
  restart)
    server "$2" -m immediate stop >&2 || true
    server "$2" start >&2
    ;;
  stop)
    server "$2" -m immediate stop >&2 || true
    rm -rf "$2"
    ;;
  tls)
    folder=$2
    (IFS=,; echo "${*:3}") >"$folder/addresses"
    openssl req -x509 -newkey ec -pkeyopt ec_paramgen_curve:prime256v1 -nodes -subj /CN=Trial \
      -addext "subjectAltName=IP:$3" -keyout "$folder/data/server.key" -out "$folder/root.crt" 2>/dev/null
    cp "$folder/root.crt" "$folder/data/server.crt"
    chmod 600 "$folder/data/server.key"
    if [ "$(id -u)" = 0 ]; then chown nobody:nogroup "$folder"/data/server.*; fi
    printf '%s\n' "local all all trust" "host all all 127.0.0.0/8 scram-sha-256" >"$folder/data/pg_hba.conf"
    echo "ssl = on" >>"$folder/data/postgresql.conf"
    server "$folder" -m fast stop >&2
    server "$folder" start >&2
    ;;
  *)
    sed -n '2,13s/^# \{0,1\}//p' "$0" >&2
    exit 2
    ;;
esac
