; Arrays
