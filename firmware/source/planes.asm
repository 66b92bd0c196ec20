; Graphics on planes
