#!/usr/bin/env bash
# Runs the sample tasks on a fresh agent and shows each run as it happens.
#   tools/demo.sh BUILD_DIR [SECONDS]     until Ctrl-C, or for so many seconds
set -u

usage() { echo "usage: tools/demo.sh BUILD_DIR [SECONDS]" >&2; exit 2; }
fail() { echo "demo: $1" >&2; exit 1; }

[ $# -eq 1 ] || [ $# -eq 2 ] || usage
limit=${2:-}
case $limit in *[!0-9]*) usage ;; esac
root=$(cd "$(dirname "$0")/.." && pwd)
build=$(cd "$1" 2>/dev/null && pwd) || fail "there is no directory $1: build first (make build)"
agent=$build/bin/noxagentd
client=$build/bin/noxctl
for program in "$agent" "$client"; do
  [ -x "$program" ] || fail "$program is missing: build first (make build)"
done

state=$build/demo
log=$state/agent.log
runtime=$state/run
# The path of a socket has to be short.
[ ${#runtime} -lt 80 ] || runtime=$(mktemp -d)
noxctl() { "$client" --runtime-dir "$runtime" "$@"; }

agent_pid=
watch_pid=
finish() {
  trap '' INT TERM HUP
  [ -z "$watch_pid" ] || { kill "$watch_pid" && wait "$watch_pid"; } 2>/dev/null
  watch_pid=
  if [ -n "$agent_pid" ]; then
    kill -TERM "$agent_pid" 2>/dev/null
    wait "$agent_pid"
    local status=$?
    agent_pid=
    [ "$status" -eq 0 ] || fail "the agent ended with status $status; its log is $log"
  fi
  [ "$runtime" = "$state/run" ] || rm -rf "$runtime"
}
trap finish EXIT

agent_died() {
  wait "$agent_pid"
  agent_pid=
  tail -n 5 "$log" >&2
  fail "the agent has ended by itself; its log is $log"
}

start_agent() {
  # Not in the terminal's foreground group: Ctrl-C is for this script alone.
  setsid "$agent" --state-dir "$state" --runtime-dir "$runtime" >"$log" 2>&1 </dev/null &
  agent_pid=$!
  for _ in $(seq 100); do
    noxctl status >/dev/null 2>&1 && return
    kill -0 "$agent_pid" 2>/dev/null || agent_died
    sleep 0.1
  done
  fail "the agent does not answer after 10 seconds; its log is $log"
}

start_watch() {
  setsid "$client" --runtime-dir "$runtime" watch &
  watch_pid=$!
  for _ in $(seq 100); do
    noxctl status --json | grep -q '"streams": 1' && return
    kill -0 "$watch_pid" 2>/dev/null || break
    sleep 0.1
  done
  fail "noxctl watch does not follow the agent"
}

# The sample with its begin so many seconds from now, and its weekday that of the begin.
sample() {
  local begin=$(($(date +%s) + $2))
  local day=$((1 << $(date -d "@$begin" +%w)))
  sed -e "s|<BeginDate>.*</BeginDate>|<BeginDate>$(date -d "@$begin" '+%Y/%m/%d %H:%M:%S')</BeginDate>|" \
      -e "s|<DaysOfWeek>.*</DaysOfWeek>|<DaysOfWeek>$day</DaysOfWeek>|" \
      "$root/examples/tasks/$1.xml"
}

add() { sample "$1" "$2" | noxctl add - --id "$1" >/dev/null || fail "cannot add the task $1"; }

# Whoever runs this waits here; a signal ends the wait at once.
wait_for_the_end() {
  local end=$((SECONDS + 10#${limit:-0}))
  while [ -z "$limit" ] || [ "$SECONDS" -lt "$end" ]; do
    kill -0 "$agent_pid" 2>/dev/null || agent_died
    sleep 0.5 &
    wait $!
    [ -z "$interrupted" ] || break
  done
}

if noxctl status >/dev/null 2>&1; then
  fail "an agent already runs in $state"
fi
rm -rf "$state" && mkdir -p "$state/var/jobs" && cp "$root"/examples/jobs/*.job "$state/var/jobs/" ||
  fail "cannot make a fresh state directory $state"
chmod go-w "$state"/var/jobs/*.job

interrupted=
trap 'interrupted=yes' INT TERM HUP
start_agent
echo "Agent runs, process $agent_pid. State, jobs and outputs: $state"
echo "Its log: $log"
if [ -n "$limit" ]; then
  echo "Showing runs for $limit seconds."
else
  echo "Showing runs until Ctrl-C."
fi
echo
echo '$ noxctl create clock every 10 s -- date'
noxctl create clock every 10 s -- date || fail "cannot create the task clock"
echo
start_watch
add welcome 0
add reminder 6
add heartbeat 3
add failing-backup 9
add weekly-report 12
wait_for_the_end

kill "$watch_pid" 2>/dev/null
wait "$watch_pid" 2>/dev/null
watch_pid=
echo
noxctl list || fail "cannot list the tasks"
finish
trap - EXIT
exit 0
