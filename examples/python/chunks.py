"""Takes images and reads what their chunks tell about them."""

import oxgenapi

with oxgenapi.SimulatedCamera() as device, oxgenapi.NodeMap.of(device) as cam:
    cam.ChunkModeActive.value = True
    cam.ChunkSelector.value = "ExposureTime"
    cam.ChunkEnable.value = True
    cam.ExposureTime.value = 1000
    cam.AcquisitionStart.execute()
    for _ in range(3):
        image = device.image()
        # Where the chunks lie is known from the transport layer. They are read in place, inside the block.
        with cam.attach_chunks(image.data, image.chunks):
            print(f"frame {image.frame_id}: ChunkExposureTime = {cam.ChunkExposureTime.value:g}")
