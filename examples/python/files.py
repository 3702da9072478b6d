"""Copies memory to a file of the camera and back."""

import oxgenapi

with oxgenapi.SimulatedCamera() as device, oxgenapi.NodeMap.of(device) as cam:
    cam.upload("UserFile1", b"calibrated in March")
    copy = cam.download("UserFile1")
    print(len(copy), "bytes:", copy.decode())
