"""Reads and writes features, and shows what a refused value says."""

import oxgenapi

with oxgenapi.SimulatedCamera() as device, oxgenapi.NodeMap.of(device) as cam:
    exposure = cam.ExposureTime
    exposure.value = 5000
    print(f"ExposureTime = {exposure.value:g} {exposure.unit} of {exposure.min:g} .. {exposure.max:g}")
    print(exposure)
    print("PixelFormat =", cam.PixelFormat.value, "of", cam.PixelFormat.entries)
    try:
        cam.Width.value = 1
    except oxgenapi.Error as error:
        print("refused:", error)
