#!/usr/bin/env bash
# with_bus.sh COMMAND...: runs the command with a message bus that is session and system bus.
exec dbus-run-session -- bash -c 'export DBUS_SYSTEM_BUS_ADDRESS=$DBUS_SESSION_BUS_ADDRESS
    exec "$@"' bash "$@"
