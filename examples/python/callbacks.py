"""Is told of every change of a feature: by a write to it or to what it depends on, by an event, by an invalidation."""

import oxgenapi

updates = []


def on_update(node):  # runs inside the call that made the change
    print("LinePitch is now", node.value)
    updates.append(node.value)


with oxgenapi.SimulatedCamera() as device, oxgenapi.NodeMap.of(device) as cam:
    with cam.LinePitch.on_update(on_update):
        cam.Width.value = 320  # the line pitch depends on it
        cam.Width.value = 160
    cam.Width.value = 640  # nobody is told
    print(len(updates), "updates")
