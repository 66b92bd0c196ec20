; Console output
