; Program storage
