; Graphics statements
