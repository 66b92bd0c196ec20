; Statement loop, table of handlers
