"""Delivers the camera's event messages to the node map and reads the features that are bound to them."""

import oxgenapi

with oxgenapi.SimulatedCamera() as device, oxgenapi.NodeMap.of(device) as cam:
    cam.EventSelector.value = "ExposureEnd"
    cam.EventNotification.value = "On"
    cam.AcquisitionStart.execute()
    device.image()
    for event in device.events():  # with a real camera: as its messages arrive
        cam.deliver_event(event.id, event.payload)
        print(f"event {event.id:x}: EventExposureEndFrameID =", cam.EventExposureEndFrameID.value)
