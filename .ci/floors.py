#!/usr/bin/env python3
"""Checks the direction of every #include in the repository: a room includes only the rooms below it, no room above
the platform reaches into the platform's sources, and no include closes a circle. Prints each violation; status 1 if
there is one."""

import os
import re
import subprocess
import sys

# Room: the folder it lives in, and the rooms it may include besides itself. The first folder that matches decides.
ROOMS = [
    ("base-public", "platform/base/include", []),
    ("base", "platform/base", ["base-public"]),
    ("telemetry-public", "platform/telemetry/include", []),
    ("telemetry", "platform/telemetry", ["telemetry-public"]),
    ("genapi-public", "platform/genapi/include", []),
    # The engine's folders, lowest first.
    ("engine-text", "platform/genapi/src/text", ["genapi-public"]),
    ("engine-formula", "platform/genapi/src/formula", ["genapi-public", "engine-text"]),
    ("engine-description", "platform/genapi/src/description", ["genapi-public", "engine-text"]),
    ("engine-evaluation", "platform/genapi/src/evaluation", ["genapi-public", "engine-text", "engine-description"]),
    ("engine-nodes", "platform/genapi/src/nodes",
     ["genapi-public", "engine-text", "engine-formula", "engine-description", "engine-evaluation"]),
    ("engine-nodemap", "platform/genapi/src/nodemap",
     ["genapi-public", "engine-text", "engine-description", "engine-evaluation", "engine-nodes"]),
    ("engine-ports", "platform/genapi/src/ports",
     ["genapi-public", "engine-text", "engine-description", "engine-evaluation", "engine-nodes", "engine-nodemap"]),
    ("engine-files", "platform/genapi/src/files", ["genapi-public", "engine-text"]),
    ("engine-firmware", "platform/genapi/src/firmware", ["genapi-public", "engine-text", "engine-files"]),
    ("genapi", "platform/genapi", ["genapi-public"]),
    ("api", "include", ["base-public"]),
    ("simulation-public", "simulation/include", []),
    ("simulation", "simulation", ["simulation-public"]),
    ("pixels-public", "camera/pixels/include", []),
    ("pixels", "camera/pixels", ["pixels-public"]),
    ("camera-public", "camera/include", ["api", "base-public"]),
    ("camera-transport", "camera/interface", []),
    ("gentl-interface", "camera/gentl", []),
    ("simulated-public", "camera/transports/simulated/library/include", ["api"]),
    ("simulated", "camera/transports/simulated/library", ["simulated-public", "api", "base-public", "simulation-public"]),
    ("probe", "camera/probe", ["camera-transport"]),
    ("transports", "camera/transports",
     ["camera-public", "camera-transport", "gentl-interface", "probe", "api", "simulation-public"]),
    ("camera", "camera/src",
     ["camera-public", "camera-transport", "probe", "api", "base-public", "pixels-public"]),
    ("library", "src", ["api", "base-public", "telemetry-public", "genapi-public"]),
    ("tool", "tools", ["api", "base-public", "telemetry-public", "genapi-public", "simulation-public",
                       "camera-public"]),
    ("examples", "examples", ["api", "base-public", "simulated-public", "camera-public"]),
]
ALLOWED = {name: {name, *below} for name, _, below in ROOMS}
# Where the compiler looks for "Name/File.h"; a room's own sources come first through the file's own folder.
INCLUDE_ROOTS = ["include", "platform/base/include", "platform/telemetry/include", "platform/genapi/include",
                 "simulation/include", "src", "platform/base/src", "platform/telemetry/src", "platform/genapi/src",
                 "camera/pixels/include",
                 "camera/include", "camera/interface", "camera/gentl", "camera/probe", "camera/src", "camera/src/exports", "camera/transports/simulated",
                 "camera/transports/simulated/library/include", "simulation", "camera/transports/aravis", "tools/oxgenapi", ""]
INCLUDE = re.compile(r'^\s*#\s*include\s*[<"]([^">]+)[">]')


def room_of(path):
    for name, folder, _ in ROOMS:
        if path.startswith(folder + "/"):
            return name
    return None


def resolve(path, name, files):
    own = room_of(path)
    candidates = [os.path.normpath(os.path.join(os.path.dirname(path), name))]
    candidates += [os.path.normpath(os.path.join(root, name)) for root in INCLUDE_ROOTS]
    found = [candidate for candidate in candidates if candidate in files]
    # The same short name may exist in several rooms; the include meant is the one in the file's own room, if any.
    inside = [candidate for candidate in found if room_of(candidate) in ALLOWED.get(own, ())]
    return (inside or found or [None])[0]


def circle_through(graph):
    """Returns one circle of includes as a list of files, or None."""
    state = {}
    for start in graph:
        if start in state:
            continue
        stack = [(start, iter(graph[start]))]
        state[start] = "open"
        while stack:
            node, rest = stack[-1]
            target = next(rest, None)
            if target is None:
                state[node] = "done"
                stack.pop()
            elif state.get(target) == "open":
                names = [name for name, _ in stack]
                return names[names.index(target):] + [target]
            elif target not in state:
                state[target] = "open"
                stack.append((target, iter(graph.get(target, []))))
    return None


def main():
    listing = subprocess.run(["git", "ls-files", "--cached", "--others", "--exclude-standard", "--",
                              "*.h", "*.hpp", "*.c", "*.cpp"], check=True, capture_output=True, text=True).stdout
    files = {path for path in listing.split("\n") if path and os.path.exists(path)}
    violations, graph = [], {}
    for path in sorted(files):
        graph[path] = []
        with open(path, encoding="utf-8") as source:
            for number, line in enumerate(source, 1):
                match = INCLUDE.match(line)
                target = resolve(path, match.group(1), files) if match else None
                if target is None:
                    continue
                if target != path:
                    graph[path].append(target)
                room, other = room_of(path), room_of(target)
                if room and other not in ALLOWED[room]:
                    violations.append(f"{path}:{number}: {room} may not include {target} ({other or 'outside the floors'})")
    circle = circle_through(graph)
    if circle:
        violations.append("circle of includes: " + " -> ".join(circle))
    print("\n".join(violations))
    return 1 if violations else 0


if __name__ == "__main__":
    sys.exit(main())
