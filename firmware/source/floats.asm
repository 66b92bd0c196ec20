; Floats
