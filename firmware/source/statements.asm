; Other statements
