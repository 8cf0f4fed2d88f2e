#!/usr/bin/env bash
# with_bus.sh COMMAND...: runs the command with a message bus of its own, for session and system.
exec dbus-run-session -- bash -c 'export DBUS_SYSTEM_BUS_ADDRESS=$DBUS_SESSION_BUS_ADDRESS
    exec "$@"' bash "$@"
