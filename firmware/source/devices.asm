; Devices at start
