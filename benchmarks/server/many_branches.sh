#!/usr/bin/env bash
# Brings one database as many branches to a PostgreSQL server of its own, which is left running, and
# prints what a run of letters over them needs.
#
#   many_branches.sh PROGRAM DATABASE COUNT
set -eu
if [ $# != 3 ]; then
  sed -n '2,5s/^# \{0,1\}//p' "$0" >&2
  exit 2
fi
program=$1 database=$2 count=$3
cluster=$("$(dirname "$0")/../../scripts/private_postgres.sh" start)
psql -q -h "$cluster" -U tenora -c "create database rents" postgres
printf '[rents]\nhost=%s\ndbname=rents\nuser=tenora\n' "$cluster" >"$cluster.services"
export PGSERVICEFILE=$cluster.services
"$program" server init rents
for branch in $(seq -f 'B%03g' "$count"); do
  # Status 1: the data contradict one another, as the sample's do.
  "$program" server import "$database" --branch "$branch" --service rents || [ $? = 1 ]
done
psql -h "$cluster" -U tenora -c "select relname, pg_size_pretty(pg_relation_size(oid)) from pg_class
  where relnamespace = 'rental'::regnamespace and pg_relation_size(oid) > 1e7
  order by pg_relation_size(oid) desc" rents
echo "export PGSERVICEFILE=$PGSERVICEFILE"
echo "DatabaseLocation is service=rents branch=B001; afterwards: private_postgres.sh stop $cluster"
